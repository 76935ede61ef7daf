// SPDX-License-Identifier: MIT
// The one thread on which a test program opens dialogs beside its own. The system's file dialogs use COM, and
// a new thread for each of them would be a new apartment each time, which takes long to serve on a loaded
// machine.
#pragma once

#include <windows.h>

#include <functional>

namespace kfx::test {

// Starts `call` on the thread and returns; the dialog that it opens gets `owner` as its owner (see
// idle_owner.h), and WaitForIdleDialog waits for it. False when the call before has not ended: its dialog is
// still open.
bool StartDialog(std::function<void(HWND owner)> call);

// Waits until the call has ended. False: its dialog does not close.
bool WaitUntilDialogEnds();

}  // namespace kfx::test
