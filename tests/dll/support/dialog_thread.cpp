// SPDX-License-Identifier: MIT
#include "tests/dll/support/dialog_thread.h"

#include <objbase.h>
#include <ole2.h>

#include <atomic>
#include <thread>

#include "tests/dll/support/idle_owner.h"
#include "tests/support/wait_for.h"

namespace kfx::test {
namespace {

constexpr UINT kRunCall = WM_APP + 78;

std::atomic<DWORD> dialogThread;  // 0: not started
std::atomic<bool> callRuns;
std::function<void(HWND)> startedCall;  // the thread's own while callRuns

// Between dialogs the thread goes on taking messages, as the system expects of one that has windows and COM.
void RunDialogs() {
    OleInitialize(nullptr);
    MSG message;
    PeekMessageA(&message, nullptr, 0, 0, PM_NOREMOVE);  // makes the queue
    dialogThread = GetCurrentThreadId();
    while (GetMessageA(&message, nullptr, 0, 0) > 0) {
        if (message.hwnd || message.message != kRunCall) {
            DispatchMessageA(&message);
            continue;
        }
        {
            const IdleOwner owner;
            startedCall(owner.window);
        }
        callRuns = false;
    }
}

}  // namespace

bool StartDialog(std::function<void(HWND owner)> call) {
    if (!dialogThread) {
        // Detached: a dialog that hangs must not keep the program from ending.
        std::thread(RunDialogs).detach();
        if (!WaitFor([] { return dialogThread != 0; })) return false;
    }
    if (callRuns) return false;
    ForgetIdleDialog();
    startedCall = std::move(call);
    callRuns = true;
    if (PostThreadMessageA(dialogThread, kRunCall, 0, 0)) return true;
    callRuns = false;
    return false;
}

bool WaitUntilDialogEnds() {
    return WaitFor([] { return !callRuns; });
}

}  // namespace kfx::test
