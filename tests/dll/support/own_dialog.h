// SPDX-License-Identifier: MIT
// What may be done to the plug-in's window inside a request, on the window's own thread.
#pragma once

#include <windows.h>

namespace kfx::test {

// The dialog of the calling thread, even before it is shown.
HWND OwnDialog();

void DestroyOwnDialog();
void EndOwnDialog();

// Expects that the plug-in has freed everything, and nothing twice.
void ExpectNothingLeft();

}  // namespace kfx::test
