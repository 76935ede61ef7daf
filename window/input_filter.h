// SPDX-License-Identifier: MIT
// Keys and clicks in the plug-in window that its controls would keep to themselves: Ctrl+O and Ctrl+S, and
// what opens the context menu of a slider. The tooltips learn here where the pointer is.
#pragma once

#include <windows.h>

namespace kfx {

// From now on the window gets such input as messages of its own: WM_COMMAND and WM_CONTEXTMENU.
void StartInputFilter();

void StopInputFilter();

}  // namespace kfx
