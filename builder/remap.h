// SPDX-License-Identifier: MIT
// From full colour to palette indices: each pixel by itself, or with the error spread over its neighbours.
#pragma once

#include <cstdint>

#include "builder/color_index.h"
#include "framework/working_image.h"

namespace kfx {

// What the frames of a build are converted to, and what is kept from frame to frame.
struct RemapTarget {
    uint8_t palette[kPaletteBytes] = {};
    int32_t bitsPerPixel = 8;      // 1 to 8
    int32_t colorCount = 256;      // entries that are searched
    bool fastRemap = false;        // an exact match, else the colour's 15-bit rounding
    int32_t ditherBrightness = 0;  // tone curve of two-colour dithering
    int32_t ditherContrast = 0;
    ColorIndex index;
};

// Both return a new image of 1, 4 or 8 bits with the target's palette; the source is neither changed nor
// freed. Null: memory ran out or the source could not be locked.

// Every pixel becomes its nearest entry; in two colours, white from luminance 129 on.
ImageHandle PlainRemap(ImageHandle source, RemapTarget* target);

// Error diffusion with Floyd and Steinberg's weights ("An Adaptive Algorithm for Spatial Greyscale", 1976),
// always left to right, in gray for a two-colour target. Null also for a 1-bit source, which is refused.
ImageHandle DitherRemap(ImageHandle source, RemapTarget* target);

// The target's colour index, made ready for an image of that bit count: indices always fit its pixels. Null:
// memory ran out.
ColorIndex* IndexFor(RemapTarget* target, int32_t imageBitCount);

// Writes the palette index of column x into a zeroed row.
template <int kBits>
inline void PutIndex(uint8_t* row, int32_t x, uint32_t index) {
    if constexpr (kBits == 8)
        row[x] = static_cast<uint8_t>(index);
    else if constexpr (kBits == 4)
        row[x >> 1] |= static_cast<uint8_t>(x & 1 ? index : index << 4);
    else
        row[x >> 3] |= static_cast<uint8_t>(index << (7 - (x & 7)));
}

// The index in column x of a row of 1, 4 or 8 bits.
inline uint8_t GetIndex(const uint8_t* row, int32_t bitCount, int32_t x) {
    if (bitCount == 8) return row[x];
    if (bitCount == 4) return static_cast<uint8_t>(x & 1 ? row[x >> 1] & 15 : row[x >> 1] >> 4);
    return static_cast<uint8_t>(row[x >> 3] >> (7 - (x & 7)) & 1);
}

}  // namespace kfx
