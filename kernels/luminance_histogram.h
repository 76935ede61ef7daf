// SPDX-License-Identifier: MIT
// How many pixels of a picture, or of several, have each luminance.
#pragma once

#include "framework/working_image.h"

namespace kfx {

constexpr int32_t kLuminanceLevels = 256;

// An animation may have more pixels than 32 bits count.
struct LuminanceHistogram {
    uint64_t counts[kLuminanceLevels];
    uint64_t pixels;
};

// Adds the pixels of a 24-bit image. A luminance is 77 / 255 of red, 150 / 255 of green and 28 / 255 of blue,
// each share truncated.
void CountLuminance(const WorkingImage* image, LuminanceHistogram* histogram);

// The first levels from below and from above at which more than `threshold` pixels have been met.
void FindLuminanceRange(const LuminanceHistogram& histogram, uint64_t threshold, int32_t* low, int32_t* high);

}  // namespace kfx
