// SPDX-License-Identifier: MIT
// Gaussian Blur's sums of few taps, estimated in whole numbers, and in order where an estimate is too near a
// rounding boundary.
#pragma once

#include <cstddef>
#include <cstdint>

#include "framework/cpu.h"

namespace kfx {

// What is added to a sum that is then truncated, so that halves are rounded up. It is the number just below
// 0.5: with it single precision gives what double precision gives with 0.5, for every sum below 2^22.
constexpr float kBlurHalf = 0x1.fffffep-2f;

constexpr size_t kEstimateRoom = 32;  // samples behind the last one that are read

#if KFX_HAS_AVX2

// How a sum is estimated: samples that have about the same weight are added first, and two products are
// summed by one instruction. Weights are in units of 2^-shift.
struct BlurEstimate {
    const float* weights;  // n, for sums in order; the caller's
    int32_t n;
    int32_t pairs[3];  // two weights each, the first in the low word
    int32_t shift;
    int32_t addend;  // a half for rounding, and as much as the estimate may be too low
    int32_t doubt;   // by so much it may then be too high
};

// Fills `estimate` for n weights, none of them negative, whose sum is 1; they must outlive it. Those at the
// same distance from the middle should be about equal, as a bell's are: the less they are, the more sums are
// made in order. False: n is not 5, 7, 9 or 11, and nothing is filled.
bool MakeBlurEstimate(const float* weights, int32_t n, BlurEstimate* estimate);

// out[s] for `count` samples: the sum of weights[j] * rows[j][s] in the order of j in single precision,
// rounded, halves up. Samples are from 0 to 255. Each row has room for kEstimateRoom more; so has `words`,
// some of which are written.
void BlurToWords(const BlurEstimate& estimate, const uint16_t* const* rows, size_t count, uint16_t* words);

// The same as bytes. Nothing is written behind the last one.
void BlurToBytes(const BlurEstimate& estimate, const uint16_t* const* rows, size_t count, uint8_t* bytes);

#endif

}  // namespace kfx
