// SPDX-License-Identifier: MIT
// An estimate for smears: weights as whole numbers, whose products can be added in any order.
#pragma once

#include <cstddef>
#include <cstdint>

#include "framework/cpu.h"

namespace kfx {

constexpr int32_t kSmearPixels = 16;  // summed side by side
constexpr int32_t kSmearSamples = 3 * kSmearPixels;

// Weights are counted in units of 2^-27 and held as a high part times 2^13 and a low part. With no more taps
// than this the sums of low parts fit 32 bits.
constexpr int32_t kMostWholeTaps = 1000;

// The weights of a smear, two taps in a word; the partner of an odd last tap is zero.
struct WholeWeights {
    int32_t* highPairs;
    int32_t* lowPairs;
    // For each tap, and one past the last: the sums of the parts from there on.
    int32_t* highRest;
    int32_t* lowRest;
    int32_t margin;  // in units of 2^-14 levels: how far the sum may be off
};

// Rounds `count` weights, at most kMostWholeTaps, none above 1. The tables hold count + 2 entries each.
void RoundWeights(const double* weights, int32_t count, WholeWeights* whole);

#if KFX_HAS_AVX2

// Sums kSmearSamples samples over the first 2 * `pairs` taps, whose samples begin at samples[tap]; for all
// other taps the samples are `background`, a block of background pixels. Writes the truncated sums and
// returns whether any is in doubt; only then `doubts` says which.
KFX_AVX2 bool SumWholeWeights(const WholeWeights& weights, const uint8_t* const* samples, int32_t pairs,
                              const uint8_t* background, uint8_t* out, uint8_t* doubts);

// The taps as they are added in double precision.
struct OrderedTaps {
    const double* weights;  // in the order of the smear
    // How many weights stand before each tap of the estimate, which adds those that fall on one pixel; one
    // more entry at the end.
    const int32_t* before;
    int32_t count;  // of the weights that can change a result
};

// kSmearSamples samples, each added in the order of the taps: those of the first `used` taps of the estimate
// begin at samples[tap], all others are `background`.
KFX_AVX2 void SumInOrder(const OrderedTaps& taps, const uint8_t* const* samples, int32_t used,
                         const uint8_t* background, uint8_t* out);

// The least and the greatest of each sample over the first `count` taps.
KFX_AVX2 void RangeOfSamples(const uint8_t* const* samples, int32_t count, uint8_t* least, uint8_t* greatest);

#endif

}  // namespace kfx
