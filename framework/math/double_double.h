// SPDX-License-Identifier: MIT
// Arithmetic on unevaluated sums of two doubles, written once for one number and for four in lanes: V is
// double or a vector of four (kernels/math_lanes.h).
#pragma once

#include <cfloat>
#include <cstdint>
#include <cstring>

#include "framework/cpu.h"

namespace kfx::math {

// The error terms below are exact only when every operation rounds to a double at once.
static_assert(FLT_EVAL_METHOD == 0, "doubles are kept in wider registers");

// Whole numbers and masks that go with a kind of number.
template <class V>
struct Companions;

template <>
struct Companions<double> {
    using Bits = uint64_t;
    using Mask = bool;
};

KFX_INLINE uint64_t BitsOf(double x) {
    uint64_t bits;
    std::memcpy(&bits, &x, sizeof bits);
    return bits;
}

KFX_INLINE double FromBits(uint64_t bits) {
    double x;
    std::memcpy(&x, &bits, sizeof x);
    return x;
}

KFX_INLINE double Gather(const double* table, uint64_t index) { return table[index]; }

template <class V>
KFX_INLINE V Magnitude(V x) {
    return FromBits(BitsOf(x) & typename Companions<V>::Bits(~uint64_t{0} >> 1));
}

template <class V>
struct Pair {
    V high;
    V low;
};

// a + b exactly (Knuth, "The Art of Computer Programming", volume 2, theorem 4.2.2 B).
template <class V>
KFX_INLINE Pair<V> TwoSum(V a, V b) {
    const V sum = a + b;
    const V partOfB = sum - a;
    return {sum, (a - (sum - partOfB)) + (b - partOfB)};
}

// The same for |a| >= |b| (Dekker, "A floating-point technique for extending the available precision",
// Numerische Mathematik 18, 1971).
template <class V>
KFX_INLINE Pair<V> FastTwoSum(V a, V b) {
    const V sum = a + b;
    return {sum, b - (sum - a)};
}

// The 26 leading bits of a number.
template <class V>
KFX_INLINE V LeadingHalf(V x) {
    return FromBits(BitsOf(x) & typename Companions<V>::Bits(~uint64_t{0} << 27));
}

// a * b, with an error below 2^-104 of it: Dekker's product, its factors cut by a mask instead of rounded.
template <class V>
KFX_INLINE Pair<V> TwoProduct(V a, V b) {
    const V product = a * b;
    const V aHigh = LeadingHalf(a), aLow = a - aHigh;
    const V bHigh = LeadingHalf(b), bLow = b - bHigh;
    return {product, (((aHigh * bHigh - product) + aHigh * bLow) + aLow * bHigh) + aLow * bLow};
}

// A value, and whether it is certain to be the exact value rounded.
template <class V>
struct Rounded {
    V value;
    typename Companions<V>::Mask sure;
};

// The rounding test of Ziv: whether all that lies within `error` of the pair rounds to one double.
template <class V>
KFX_INLINE Rounded<V> RoundPair(Pair<V> pair, V error) {
    const V upper = pair.high + (pair.low + error);
    const V lower = pair.high + (pair.low - error);
    return {lower, upper == lower};
}

// Adding this and taking it away again rounds a number below 2^51 to a whole one, which then stands in the
// sum's last bits.
constexpr double kRounder = 6755399441055744.0;

}  // namespace kfx::math
