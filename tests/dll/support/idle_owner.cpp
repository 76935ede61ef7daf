// SPDX-License-Identifier: MIT
#include "tests/dll/support/idle_owner.h"

#include <atomic>

#include "tests/support/wait_for.h"

namespace kfx::test {
namespace {

constexpr UINT kMarker = WM_APP + 77;  // what was posted before it has been done when it comes

// Window procedures have no argument for these.
std::atomic<HWND> ownerWindow, idleDialog;
std::atomic<bool> ownerGone;
std::atomic<int> markersPosted, markersSeen, markersSettled;

void PostMarker(HWND owner) {
    ++markersPosted;
    PostMessageA(owner, kMarker, 0, 0);
}

// A modal dialog tells its owner whenever its queue is empty. The first time, it has been shown but not
// painted.
LRESULT CALLBACK OwnerProcedure(HWND window, UINT message, WPARAM word, LPARAM data) {
    if (message == kMarker) ++markersSeen;
    if (message == WM_ENTERIDLE && word == MSGF_DIALOGBOX) {
        if (markersPosted == 0) PostMarker(window);
        if (markersSeen > 0) idleDialog = reinterpret_cast<HWND>(data);
        markersSettled = markersSeen.load();
    }
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

IdleOwner::IdleOwner() : window(MakeOwner()) { ownerWindow = window; }

IdleOwner::~IdleOwner() {
    DestroyWindow(window);
    ownerGone = true;
}

void ForgetIdleDialog() {
    ownerWindow = idleDialog = nullptr;
    ownerGone = false;
    markersPosted = markersSeen = markersSettled = 0;
}

HWND WaitForIdleDialog() {
    WaitFor([] { return idleDialog || ownerGone; });
    return ownerGone ? nullptr : idleDialog.load();
}

bool SettleIdleDialog() {
    if (!WaitForIdleDialog()) return false;
    PostMarker(ownerWindow);
    const int marker = markersPosted;
    return WaitFor([marker] { return markersSettled >= marker || ownerGone; }) && !ownerGone;
}

}  // namespace kfx::test
