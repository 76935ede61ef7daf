// SPDX-License-Identifier: MIT
// From full colour to palette indices: each pixel by itself, or with the error spread over its neighbours.
#pragma once

#include <cstdint>

#include "framework/working_image.h"
#include "kernels/color_index.h"

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

// Makes the target ready for frames that are converted on several threads at a time. False: memory ran out.
bool PrepareTarget(RemapTarget* target);

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

}  // namespace kfx
