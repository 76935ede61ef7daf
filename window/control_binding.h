// SPDX-License-Identifier: MIT
// What happens when a bound control changes: its state goes into its variable, and the preview follows.
#pragma once

#include <windows.h>

namespace kfx {

constexpr UINT_PTR kUpdateTimer = 15;

// Takes a command of a control that no row of the command table handles.
void OnControlChange(HWND window, HWND control, int id, int notification);

// Takes a scroll message of a slider: code and position as the message carries them.
void OnScroll(HWND window, HWND slider, int code, int trackedPosition);

// The update timer ran out: the user has stopped changing parameters.
void OnUpdateTimer(HWND window);

}  // namespace kfx
