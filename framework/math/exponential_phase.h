// SPDX-License-Identifier: MIT
// The exponential function in pairs of doubles, after Tang, "Table-driven implementation of the exponential
// function in IEEE floating-point arithmetic", ACM TOMS 15, 1989: x = (256 n + j) ln 2 / 256 + r, and e^x is
// 2^n times a tabulated 2^(j / 256) times a polynomial in r.
#pragma once

#include "framework/math/double_double.h"
#include "framework/math/tables.h"

namespace kfx::math {

// value * 2^n, where n is what `steps` holds from bit 8 on, as a signed number; value in [0.99, 2.01].
template <class V>
struct ScaledPair {
    Pair<V> value;
    typename Companions<V>::Bits steps;
};

// Relative to the value, without the error of the argument. With |r| <= ln 2 / 512 the tail is below 2^-20,
// and one rounding of it counts 2^-73. There are nine of them: four in the tail, five where it is joined with
// the rest. Left out are the tail times powerLow, which counts one, and r.high * r.low, which counts two.
// These are 12 * 2^-73 < 2^-69.4; all other errors are below 2^-78.
constexpr double kExponentialError = 0x1p-69;

// e^(x + low) for |x| < 800 and |low| below 2^-40.
template <class V>
KFX_INLINE ScaledPair<V> ExponentialOf(V x, V low) {
    using Bits = typename Companions<V>::Bits;
    const V shifted = x * V(0x1.71547652b82fep+8) + V(kRounder);
    const V n = shifted - V(kRounder);
    const Bits steps = BitsOf(shifted) - BitsOf(V(kRounder));
    // The first difference is exact: its two sides are close together, or the second is 0.
    const Pair<V> coarse = TwoSum(x - n * V(kLn2Over256[0]), V(0) - n * V(kLn2Over256[1]));
    // Next to a multiple of ln 2 / 256 the second term may be the larger one.
    const Pair<V> r = TwoSum(coarse.high, coarse.low + (low - n * V(kLn2Over256[2])));

    const Bits index = (steps & Bits(255)) << 1;
    const V power = Gather(kPowersOfTwo, index);
    const V powerLow = Gather(kPowersOfTwo + 1, index);
    const V x1 = r.high;
    const V square = x1 * x1;
    const V tail = square * ((V(1.0 / 2) + x1 * V(1.0 / 6)) +
                             square * ((V(1.0 / 24) + x1 * V(1.0 / 120)) + square * V(1.0 / 720)));
    const Pair<V> linear = TwoProduct(power, x1);
    const Pair<V> sum = FastTwoSum(power, linear.high);
    const V rest = sum.low + (linear.low + ((powerLow + powerLow * x1) + power * (tail + r.low)));
    return {FastTwoSum(sum.high, rest), steps};
}

}  // namespace kfx::math
