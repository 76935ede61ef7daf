// SPDX-License-Identifier: MIT
#pragma once

#include "framework/effect_record.h"

namespace kfx {

// Fills the `count` weights of a one-sided bell of spread `sigma` taps: three samples of the curve a tap,
// from the centre outwards, normalised to sum 1. sigma must not be 0.
void BuildMotionWeights(int32_t count, double sigma, double* weights);

// Smears a 24-bit picture along a line at `angle` degrees over 2 * radius + 1 taps, or as many as count when
// the radius is not positive. Samples outside the picture are `background` (0x00BBGGRR). A new image, or null
// for a depth of 0, a smear longer than any picture, or when memory ran out.
ImageHandle ApplyMotionBlur(ImageHandle source, int32_t depth, int32_t radius, int32_t angle,
                            uint32_t background);

extern const EffectRecord kMotionBlurEffect;

}  // namespace kfx
