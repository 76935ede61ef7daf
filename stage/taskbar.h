// SPDX-License-Identifier: MIT
// How far the work is, on the window's button of the task bar. Where the system has no such thing, nothing
// happens. For the window's thread.
#pragma once

#include <windows.h>

namespace kfx::stage {

// `total` 0: nobody knows how far it is.
void ShowTaskbarProgress(HWND window, int done, int total);
void ClearTaskbarProgress(HWND window);

}  // namespace kfx::stage
