// SPDX-License-Identifier: MIT
// The palettes that do not depend on the pictures, by their row in the window's palette list.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "framework/working_image.h"

namespace kfx {

using PaletteTable = std::array<uint8_t, kPaletteBytes>;  // 256 red-green-blue triples

constexpr int32_t kOrthogonal256 = 6;  // the choice of the cube of 256 colours

// Fills `palette` (768 bytes, unused entries zero) and sets `*bitsPerPixel`; either may be null. Choices: 0
// black and white, 1 sixteen colours, 2 to 4 and 6 orthogonal cubes of 32, 64, 128 and 256, 5 the 216 safe
// colours, 7 a cube with grays, 8 grays, 9 the eight corner colours; anything else is like 6. Returns the
// palette's colour count.
int32_t BuildFixedPalette(uint8_t* palette, int32_t choice, int32_t* bitsPerPixel);

extern const PaletteTable kSafePalette;   // choice 5
extern const PaletteTable kCubeAndGrays;  // choice 7

}  // namespace kfx
