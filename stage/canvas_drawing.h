// SPDX-License-Identifier: MIT
#pragma once

#include <windows.h>

namespace kfx::stage {

struct Stage;

// Answers the canvas's WM_PAINT. Everything is drawn off screen first: animations must not flicker.
void PaintCanvas(const Stage& stage, HWND canvas);

}  // namespace kfx::stage
