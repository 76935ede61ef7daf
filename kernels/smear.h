// SPDX-License-Identifier: MIT
// Weighted sums along a line, for Motion Blur.
#pragma once

#include "framework/working_image.h"

namespace kfx {

struct Tap {
    double weight;
    int32_t dx;
    int32_t dy;  // upwards as the picture is seen
};

// For every pixel of a locked 24-bit image: the sum of tap weight times the pixel at (dx, dy) from it, in the
// order of the taps, truncated, into an image of the same size. The taps walk away from the pixel, in either
// direction of each axis, and their weights sum to 1. Samples outside the picture are `background`
// (0x00BBGGRR). False: memory ran out.
bool SmearImage(const WorkingImage* from, WorkingImage* to, const Tap* taps, int32_t count,
                uint32_t background);

}  // namespace kfx
