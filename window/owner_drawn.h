// SPDX-License-Identifier: MIT
// The window's owner-drawn controls other than push buttons, logo and preview.
#pragma once

#include <windows.h>

namespace kfx {

// A swatch of the colour that the button is bound to.
void DrawColorButton(const DRAWITEMSTRUCT& item);

// A flat box with the control's text in one line; a path too long for it is shortened in its middle.
void DrawFlatBox(const DRAWITEMSTRUCT& item, bool isPath);

}  // namespace kfx
