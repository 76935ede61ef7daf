// SPDX-License-Identifier: MIT
// Gaussian Blur line by line, for pictures of any depth. separable_blur.h gives the same bytes faster for 24
// bits.
#pragma once

#include "framework/working_image.h"

namespace kfx {

// Blurs one line of `length` samples, `channels` of them interleaved; `source` and `destination` do not
// overlap. At the ends the weights are cut off and renormalised. A line shorter than the n weights is left
// untouched.
void BlurLine(const float* weights, int32_t n, const uint8_t* source, uint8_t* destination, int32_t length,
              int32_t channels);

// Blurs rows, then columns, of a locked image with n weights into an image like it. Colours are blurred
// channel by channel, a fourth byte stays as it is, colour-table indices are blurred as numbers. False:
// memory ran out, the result is not to be used.
bool BlurAnyDepth(const WorkingImage* from, WorkingImage* to, const float* weights, int32_t n);

}  // namespace kfx
