// SPDX-License-Identifier: MIT
// Small rules about palettes: bits for a count of colours, the nearest entry, order by luminance.
#pragma once

#include <cstdint>

namespace kfx {

// How many bits hold that many colours: 1 to 8, or 24 above 256.
int32_t BitsForColors(int32_t colors);

// A colour's luminance: weights 77, 150 and 28 of 255, each term truncated on its own.
inline int32_t LuminanceOf(int32_t red, int32_t green, int32_t blue) {
    return 77 * red / 255 + 150 * green / 255 + 28 * blue / 255;
}

// How far apart two colours are to the eye, roughly: 3 parts red, 4 green, 2 blue, squared differences.
inline int32_t ColorDistance(const uint8_t* entry, int32_t red, int32_t green, int32_t blue) {
    const int32_t r = red - entry[0];
    const int32_t g = green - entry[1];
    const int32_t b = blue - entry[2];
    return 3 * r * r + 4 * g * g + 2 * b * b;
}

// The nearest of the first `count` red-green-blue entries, the lowest index among equals; 0 when there are
// none. For single questions: pictures go through a ColorIndex.
int32_t NearestEntry(const uint8_t* palette, int32_t count, int32_t red, int32_t green, int32_t blue);

// Sorts the first `count` entries by ascending luminance; entries of equal luminance keep their order.
void SortByLuminance(uint8_t* palette, int32_t count);

}  // namespace kfx
