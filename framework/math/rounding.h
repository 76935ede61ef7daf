// SPDX-License-Identifier: MIT
// Scaling by powers of two, and the one rounding of a whole number to a double.
#pragma once

#include <cstdint>

namespace kfx::math {

// x * 2^n, exactly unless it overflows or loses bits to a subnormal result.
double Scale(double x, int32_t n);

// A positive number as (significand + a little) * 2^exponent rounded to nearest, ties to even; there is a
// little, less than 1, when `sticky` is set, and then the significand must have at least 55 bits.
double RoundScaled(uint64_t significand, bool sticky, int32_t exponent);

// The number of bits from the highest set one down; 0 for 0.
int32_t BitLength(uint64_t number);

}  // namespace kfx::math
