// SPDX-License-Identifier: MIT
#pragma once

#include "framework/math/wide_number.h"

namespace kfx::math {

// e^x = value * 2^exponent, the value in [1, 2] with an error below 2^kWideExponentialError units if x is
// exact. |x| up to 1100.
struct WidePower {
    WideNumber value;
    int32_t exponent;
};
WidePower WideExponential(const WideNumber& x);

constexpr int32_t kWideExponentialError = 14;

}  // namespace kfx::math
