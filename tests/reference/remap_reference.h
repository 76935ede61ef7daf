// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "framework/working_image.h"

namespace kfx::test {

// What remapping depends on.
struct ReferenceTarget {
    const uint8_t* palette;  // 256 red-green-blue triples
    int32_t bitsPerPixel;
    int32_t colorCount;
    bool fastRemap;
    int32_t brightness;
    int32_t contrast;
};

// The nearest of `count` entries, an exact match first.
int32_t ReferenceNearest(const uint8_t* palette, int32_t count, int32_t red, int32_t green, int32_t blue);

// Exchanges neighbours until none is darker than the one before it.
void ReferenceSort(uint8_t* palette, int32_t count);

// Pixel by pixel through the accessors, each with whole searches.
ImageHandle ReferencePlainRemap(ImageHandle source, const ReferenceTarget& target);
ImageHandle ReferenceDitherRemap(ImageHandle source, const ReferenceTarget& target);

// The mask of a frame against the composite, which is brought up to date.
ImageHandle ReferenceUpdateComposite(ImageHandle composite, ImageHandle frame);

}  // namespace kfx::test
