// SPDX-License-Identifier: MIT
#pragma once

#include <cstring>
#include <random>

#include "builder/fixed_palettes.h"

namespace kfx::test {

// A palette with entries of its own and some that occur twice or lie side by side.
inline void FillRandomPalette(uint8_t palette[kPaletteBytes], int32_t colors, uint32_t seed) {
    std::mt19937 random(seed);
    std::memset(palette, 0, kPaletteBytes);
    for (int32_t i = 0; i < 3 * colors; ++i) {
        const bool repeat = i >= 30 && i / 3 % 5 == 0;
        palette[i] = repeat ? palette[i - 15] : static_cast<uint8_t>(random());
    }
}

}  // namespace kfx::test
