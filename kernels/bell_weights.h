// SPDX-License-Identifier: MIT
// Weights from a Gaussian bell.
#pragma once

#include <cstdint>

namespace kfx {

// Fills the n (at least 1) weights of a Gaussian of spread `sigma` pixels, normalised to sum 1. Each is
// integrated from three samples a third of a pixel apart. sigma must not be 0.
void BuildBlurWeights(int32_t n, float sigma, float* weights);

// Fills the `count` weights of a one-sided bell of spread `sigma` taps: three samples of the curve a tap,
// from the centre outwards, normalised to sum 1. sigma must not be 0.
void BuildMotionWeights(int32_t count, double sigma, double* weights);

}  // namespace kfx
