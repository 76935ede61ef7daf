// SPDX-License-Identifier: MIT
// The natural logarithm in pairs of doubles, after Tang, "Table-driven implementation of the logarithm
// function in IEEE floating-point arithmetic", ACM TOMS 16, 1990: x = 2^n m, c m = 1 + z with a tabulated c
// so short that z is exact, and ln x is n ln 2 - ln c + ln(1 + z).
#pragma once

#include "framework/math/double_double.h"
#include "framework/math/tables.h"

namespace kfx::math {

// Bounds the error of the logarithm: the rounding of the cubic term, where the other terms nearly cancel.
constexpr double kLogarithmError = 0x1p-69;

// ln(x * 2^shift) for a positive normal number.
template <class V>
KFX_INLINE Pair<V> LogarithmOf(V x, V shift) {
    using Bits = typename Companions<V>::Bits;
    const Bits place = BitsOf(x) - Bits(kLeastSignificand);
    const V m = FromBits(BitsOf(x) - (place & Bits(uint64_t{0xFFF} << 52)));
    // The exponent plus 1024 is positive; as the last bits of 2^52 it becomes a double.
    const Bits biased = (place + Bits(uint64_t{1024} << 52)) >> 52;
    const V n = (FromBits(biased | BitsOf(V(0x1p52))) - V(0x1p52 + 1024)) + shift;
    const Bits entry = (place >> 43) & Bits(511);
    const Bits index = entry + entry + entry;
    const V c = Gather(kLogarithms, index);
    const V mHigh = FromBits(BitsOf(m) & Bits(~uint64_t{0} << 21));
    const Pair<V> z = TwoSum(mHigh * c - V(1), (m - mHigh) * c);

    const V start = n * V(kLn2[0]) + Gather(kLogarithms + 1, index);  // exact
    const V startLow = n * V(kLn2[1]) + Gather(kLogarithms + 2, index);
    const Pair<V> square = TwoProduct(z.high, z.high);
    const V z2 = square.high;
    const V cubic = z.high * z2 *
                    ((V(1.0 / 3) - z.high * V(1.0 / 4)) +
                     z2 * ((V(1.0 / 5) - z.high * V(1.0 / 6)) +
                           z2 * ((V(1.0 / 7) - z.high * V(1.0 / 8)) + z2 * V(1.0 / 9))));
    const Pair<V> first = FastTwoSum(start, z.high);
    const Pair<V> second = FastTwoSum(first.high, V(-0.5) * square.high);
    const V rest = (startLow + (z.low - z.high * z.low)) + (cubic - V(0.5) * square.low);
    return FastTwoSum(second.high, (first.low + second.low) + rest);
}

}  // namespace kfx::math
