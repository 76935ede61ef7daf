// SPDX-License-Identifier: MIT
// What several of Stage's windows draw in the same way.
#pragma once

#include <string>

#include <windows.h>

namespace kfx::stage {

// Fills the area with a colour of the system's, such as COLOR_WINDOW.
void Fill(HDC target, const RECT& area, int systemColor);

// Writes UTF-8 text into the area without a ground. `format` holds more flags of DrawText.
void DrawLine(HDC target, RECT area, const std::string& text, HFONT font, int systemColor, UINT format);

// Squares of two greys stand for transparent pixels, whatever the system's colours are.
inline constexpr int kChequerGreys[2] = {238, 204};

// Whether the pixel has the second one; squares have this many pixels on each side.
inline bool IsOddSquare(int x, int y, int square) { return (x / square + y / square) % 2 != 0; }

}  // namespace kfx::stage
