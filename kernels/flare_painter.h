// SPDX-License-Identifier: MIT
// Paints light: round spots that are blended towards white. Their strength falls off in different ways.
#pragma once

#include <cstdint>

#include "framework/working_image.h"
#include "kernels/flare_strength.h"

namespace kfx {

struct FlareSpot {
    const float* color;  // red, green, blue: 0 to 1
    double radius;       // pixels, above 0
    int32_t column;      // of the centre, possibly outside the picture
    int32_t row;
    FlareKind kind;
};

// Blends one pixel towards white by `strength` in each channel's share of `color`. Results are masked to 8
// bits, not clamped; a 32-bit pixel's top byte becomes 0. Nothing happens outside the image.
void BrightenPixel(WorkingImage* image, float strength, const float color[3], int32_t x, int32_t y);

// Blends every pixel that the spot reaches. `strengths` has room for a row.
void PaintFlareSpot(WorkingImage* image, const FlareSpot& spot, float* strengths);

}  // namespace kfx
