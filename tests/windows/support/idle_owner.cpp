// SPDX-License-Identifier: MIT
#include "tests/windows/support/idle_owner.h"

#include <atomic>

namespace kfx::test {
namespace {

std::atomic<HWND> idleDialog;  // window procedures have no argument for it

// A modal dialog tells its owner whenever its queue is empty.
LRESULT CALLBACK OwnerProcedure(HWND window, UINT message, WPARAM word, LPARAM data) {
    if (message == WM_ENTERIDLE && word == MSGF_DIALOGBOX) idleDialog = reinterpret_cast<HWND>(data);
    return DefWindowProcA(window, message, word, data);
}

HWND MakeOwner() {
    WNDCLASSA windowClass = {};
    windowClass.lpfnWndProc = OwnerProcedure;
    windowClass.lpszClassName = "IdleOwner";
    RegisterClassA(&windowClass);
    return CreateWindowExA(0, windowClass.lpszClassName, "", WS_POPUP, 0, 0, 9, 9, nullptr, nullptr, nullptr,
                           nullptr);
}

}  // namespace

IdleOwner::IdleOwner() : window(MakeOwner()) {}

IdleOwner::~IdleOwner() { DestroyWindow(window); }

void ForgetIdleDialog() { idleDialog = nullptr; }

HWND WaitForIdleDialog() {
    for (int tries = 0; tries < 6000 && !idleDialog; ++tries) Sleep(5);
    return idleDialog;
}

}  // namespace kfx::test
