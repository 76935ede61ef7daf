// SPDX-License-Identifier: MIT
// The preview area: the current effect on the source's first frame.
#pragma once

#include <windows.h>

namespace kfx {

// Renders and draws the preview, or the prompt to select an animation where there is nothing to show.
void DrawPreview(HWND window, const DRAWITEMSTRUCT& item);

// Has the preview drawn anew at once.
void RepaintPreview(HWND window);

}  // namespace kfx
