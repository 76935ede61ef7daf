// SPDX-License-Identifier: MIT
// The texts left of sliders and lists, which end at their right edge.
#pragma once

#include <windows.h>

namespace kfx {

// From now on every right-aligned text in the window is drawn a little to the left of its edge: the system
// may draw a text wider than it measures, and would cut the colon. A text whose own procedure cannot be kept
// stays as the system draws it. Call it once, when all controls are there.
void MakeCaptions(HWND window);

}  // namespace kfx
