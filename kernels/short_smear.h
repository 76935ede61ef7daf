// SPDX-License-Identifier: MIT
// Smears of few taps: an estimate in single precision over rows that are widened once.
#pragma once

#include "framework/cpu.h"
#include "kernels/smear.h"

namespace kfx {

#if KFX_HAS_AVX2

// With more different taps than this, weights as whole numbers (smear_estimate.h) are faster: they read the
// picture's bytes, of which four times as many fit the cache.
constexpr int32_t kMostShortTaps = 64;

// SmearImage() with `count` taps, of which `mergedCount` fall on different pixels: these stand in `merged`
// with the weights of all that share the pixel. False: memory ran out.
bool SmearShortLine(const WorkingImage* from, WorkingImage* to, const Tap* taps, int32_t count,
                    const Tap* merged, int32_t mergedCount, uint32_t background);

#endif

}  // namespace kfx
