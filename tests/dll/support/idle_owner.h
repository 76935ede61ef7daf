// SPDX-License-Identifier: MIT
// The owner of a modal dialog, for tests that wait until the dialog has come to rest.
#pragma once

#include <windows.h>

namespace kfx::test {

// A hidden window on the calling thread, which the dialog under test gets as its owner. One at a time.
struct IdleOwner {
    IdleOwner();
    ~IdleOwner();
    IdleOwner(const IdleOwner&) = delete;
    IdleOwner& operator=(const IdleOwner&) = delete;

    const HWND window;
};

// Forgets the dialog of before; call it before the next owner is made.
void ForgetIdleDialog();

// Waits until a dialog has nothing left to do, whatever it has posted to itself, painting included, and
// answers it; null when the owner goes without one, or when none comes.
HWND WaitForIdleDialog();

// Waits until the dialog has done everything that was posted to it so far. False: it does not come to rest.
bool SettleIdleDialog();

}  // namespace kfx::test
