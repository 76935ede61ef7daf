// SPDX-License-Identifier: MIT
// A tiny fixed-width font for labels on pictures: ASCII, capitals 5 x 7 pixels in cells of 6 x 9.
#pragma once

#include <string>

#include "media/animation.h"
#include "media/animation_writer.h"

namespace kfx {

constexpr int kGlyphWidth = 5;
constexpr int kGlyphHeight = 9;   // capitals take the upper seven rows
constexpr int kGlyphAdvance = 6;  // from one character to the next

// Whether the glyph of `character` has ink there; characters beyond ASCII look like '?'.
bool HasInk(char character, int column, int row);

// Pixels that a line of text takes at a whole-number scale.
int TextWidth(const std::string& text, int scale);

// Draws opaque text whose cell begins at (left, top), cut at the picture's border.
void DrawBitmapText(Picture* picture, int left, int top, const std::string& text, int scale, RgbColor color);

}  // namespace kfx
