// SPDX-License-Identifier: MIT
#pragma once

#include "framework/effect_record.h"

namespace kfx {

// Fills the n (at least 1) weights of a Gaussian of spread `sigma` pixels, normalised to sum 1. Each is
// integrated from three samples a third of a pixel apart. sigma must not be 0.
void BuildBlurWeights(int32_t n, float sigma, float* weights);

// Blurs one line of `length` samples, `channels` of them interleaved; `source` and `destination` do not
// overlap. At the ends the weights are cut off and renormalised. A line shorter than the n weights is left
// untouched.
void BlurLine(const float* weights, int32_t n, const uint8_t* source, uint8_t* destination, int32_t length,
              int32_t channels);

// Separable Gaussian of radius / 10 pixels of spread over 2 * ceil(depth / 10) + 1 taps; pictures narrower
// than that get a box blur of depth / 6 pixels to each side instead. A new image, or null: radius 0, a box
// too small to blur, a narrow picture of 8 bits or fewer, or memory ran out.
ImageHandle ApplyGaussianBlur(ImageHandle source, int32_t radius, int32_t depth);

extern const EffectRecord kGaussianBlurEffect;

}  // namespace kfx
