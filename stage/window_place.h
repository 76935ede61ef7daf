// SPDX-License-Identifier: MIT
// Where the main window stands, from one time to the next and from one screen to another.
#pragma once

#include <windows.h>

namespace kfx::stage {

struct Stage;

// The resolution of the window's screen, in pixels per inch.
int DpiOf(HWND window);

// Shows the window where it was the last time, if that is on a screen that is there. It has the size in
// device-independent pixels that it had then, whatever the screen's scale.
void PlaceWindow(Stage* stage);

// Takes the size that the system proposes for another scale.
void FollowDpi(Stage* stage, const RECT& proposed);

// Notes place and view in what is remembered; takes the view out of it.
void RememberWindow(Stage* stage);
void TakeRememberedView(Stage* stage);

}  // namespace kfx::stage
