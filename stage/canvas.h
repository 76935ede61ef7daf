// SPDX-License-Identifier: MIT
// The window in which source and result are shown. It takes the mouse: the dividing line follows it, the
// wheel zooms, a drag moves a picture that is larger than the window.
#pragma once

#include <windows.h>

#include "stage/view.h"

namespace kfx::stage {

struct Stage;

// Makes it as a child of the main window. Its class is registered at the first call.
HWND MakeCanvas(Stage* stage);

// Everything is to be drawn anew.
void InvalidateCanvas(const Stage& stage);

// The areas of source and result on the canvas, in its coordinates; in a wipe both are the same. Without a
// result the source has all of it.
struct CanvasPanes {
    RECT source;
    RECT result;
};
CanvasPanes PanesOf(const Stage& stage);

// What zoom commands keep in its place: the middle of the result.
void ZoomCanvas(Stage* stage, double factor);

}  // namespace kfx::stage
