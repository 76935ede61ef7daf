// SPDX-License-Identifier: MIT
#pragma once

#include <windows.h>

namespace kfx {

// Handles WM_COMMAND of the plug-in window: by the command table, or as the change of a bound control.
void OnCommand(HWND window, int id, int notification, HWND control);

}  // namespace kfx
