// SPDX-License-Identifier: MIT
#pragma once

#include <windows.h>

#include "stage/picture_drawing.h"

namespace kfx::stage {

struct Stage;

// What the view shows behind transparent pixels.
PictureGround GroundOf(const Stage& stage);

// Answers the canvas's WM_PAINT. Everything is drawn off screen first, where the system has a bitmap for it:
// animations must not flicker.
void PaintCanvas(Stage* stage, HWND canvas);

}  // namespace kfx::stage
