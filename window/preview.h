// SPDX-License-Identifier: MIT
// The preview area: the current effect on the source's first frame.
#pragma once

#include <windows.h>

namespace kfx {

// Draws the preview, or the prompt to select an animation where there is nothing to show. The picture is
// rendered only where something has changed since it was drawn last, or RepaintPreview() has asked for it.
void DrawPreview(HWND window, const DRAWITEMSTRUCT& item);

// Has the preview rendered and drawn anew at once. Until then the last picture stays on the screen.
void RepaintPreview(HWND window);

}  // namespace kfx
