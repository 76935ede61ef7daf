// SPDX-License-Identifier: MIT
// What happens when a bound control changes: its state goes into its variable, and the preview follows.
#pragma once

#include <windows.h>

namespace kfx {

constexpr UINT_PTR kUpdateTimer = 15;

// Handles a command of a control that has no row in the command table.
void OnControlChange(HWND window, HWND control, int id, int notification);

// Handles a scroll message of a slider, with the message's code and position.
void OnScroll(HWND window, HWND slider, int code, int trackedPosition);

// Turns of the wheel, 120 for a notch, with the pointer at `place` on the screen: each notch is a line of the
// slider under the pointer, otherwise of the one with the focus. False: there is none.
bool OnWheel(HWND window, int delta, POINT place);

// The update timer ran out: the user has stopped changing parameters.
void OnUpdateTimer(HWND window);

}  // namespace kfx
