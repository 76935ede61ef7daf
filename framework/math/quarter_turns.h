// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "framework/math/wide_number.h"

namespace kfx::math {

// |x| / (pi / 2) as a whole number, of which the last 32 bits are kept, and a fraction with an error below 2
// units. Exact for the largest doubles, too: of 2 / pi just those bits are taken that tell (Payne and Hanek,
// "Radian reduction for trigonometric functions", SIGNUM Newsletter 18, 1983).
struct QuarterTurns {
    uint32_t count;
    WideNumber fraction;
};
QuarterTurns CountQuarterTurns(double x, int32_t size);

// 64 bits of a fraction, from its word `first` on; word 0 stands right behind the point.
uint64_t LeadingFraction(const WideNumber& fraction, int32_t first);

}  // namespace kfx::math
