// SPDX-License-Identifier: MIT
// The context menu of a slider, which gives the slider its default.
#pragma once

#include <windows.h>

namespace kfx {

// Takes WM_CONTEXTMENU: opens the menu over a slider, at `place` or, opened by a key, below the slider.
// False: the control is no slider.
bool OnContextMenu(HWND window, HWND control, LPARAM place);

// Takes the menu's command: the slider whose menu was opened last moves to its default, as if it had been
// dragged there.
void OnSliderDefault(HWND window);

}  // namespace kfx
