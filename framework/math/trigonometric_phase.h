// SPDX-License-Identifier: MIT
// Sine and cosine in pairs of doubles: x = n pi / 512 + r, sine and cosine of the first term from a table,
// those of r by polynomials, joined by the addition theorem (Gal and Bachelis, "An accurate elementary
// mathematical library for the IEEE floating point standard", ACM TOMS 17, 1991).
#pragma once

#include "framework/math/double_double.h"
#include "framework/math/tables.h"

namespace kfx::math {

// n pi / 512 + r; n counts modulo 1024. `error` bounds r's absolute error.
template <class V>
struct Reduced {
    typename Companions<V>::Bits n;
    Pair<V> r;
    V error;
};

constexpr double kFarthestCodyWaite = 32768;

// For |x| up to kFarthestCodyWaite (Cody and Waite, "Software Manual for the Elementary Functions", 1980).
template <class V>
KFX_INLINE Reduced<V> ReduceNear(V x) {
    const V shifted = x * V(0x1.45f306dc9c883p+7) + V(kRounder);
    const V n = shifted - V(kRounder);
    // The first difference is exact: its two sides are close together, or the second is 0.
    const Pair<V> coarse = TwoSum(x - n * V(kPiOver512[0]), V(0) - n * V(kPiOver512[1]));
    // Next to a multiple of pi / 512 the second term may be the larger one. Its rounding is at most 2^-115,
    // for |n| = 1 at most 2^-116, and the last product is off by less than |n| * 2^-120.
    return {BitsOf(shifted) - BitsOf(V(kRounder)), TwoSum(coarse.high, coarse.low - n * V(kPiOver512[2])),
            Magnitude(n) * V(0x1p-115)};
}

// sin(n pi / 512) from the first quarter turn.
template <class V>
KFX_INLINE Pair<V> SineOfStep(typename Companions<V>::Bits n) {
    using Bits = typename Companions<V>::Bits;
    const Bits backwards = Bits(0) - ((n >> 8) & Bits(1));  // all ones in the second and fourth quarter
    const Bits place = ((n & Bits(255)) ^ backwards) + (backwards & Bits(257));
    const Bits index = place + place;
    const Bits sign = (n & Bits(512)) << 54;
    return {FromBits(BitsOf(Gather(kSines, index)) ^ sign),
            FromBits(BitsOf(Gather(kSines + 1, index)) ^ sign)};
}

// sin(a + r) from sin a, cos a, cos r - 1 and what sin r is beyond r.high. The last two terms are off by up
// to nine roundings; next to that no other error counts.
template <class V>
KFX_INLINE Rounded<V> JoinSine(Pair<V> sine, Pair<V> cosine, V cosineRest, V sineRest, const Reduced<V>& x) {
    const Pair<V> linear = TwoProduct(cosine.high, x.r.high);
    const Pair<V> sum = TwoSum(sine.high, linear.high);
    const V even = sine.high * cosineRest;
    const V odd = cosine.high * sineRest;
    const V rest = (linear.low + (sine.low + cosine.low * x.r.high)) + (even + odd);
    const Pair<V> result = FastTwoSum(sum.high, sum.low + rest);
    const V error = (Magnitude(even) + Magnitude(odd)) * V(0x1.8p-50) + x.error;
    return RoundPair(result, error + Magnitude(result.high) * V(0x1p-76));
}

template <class V>
struct SineAndCosine {
    Rounded<V> sine;
    Rounded<V> cosine;
};

template <class V>
KFX_INLINE SineAndCosine<V> SineAndCosineOf(const Reduced<V>& x) {
    using Bits = typename Companions<V>::Bits;
    const V r = x.r.high;
    const V square = r * r;
    const V sineRest =
        r * square * (V(-1.0 / 6) + square * (V(1.0 / 120) - square * V(1.0 / 5040))) + x.r.low;
    const V cosineRest =
        square * (V(-1.0 / 2) + square * (V(1.0 / 24) - square * V(1.0 / 720))) - r * x.r.low;
    const Pair<V> sine = SineOfStep<V>(x.n);
    const Pair<V> cosine = SineOfStep<V>(x.n + Bits(256));
    const Pair<V> minusSine = {V(0) - sine.high, V(0) - sine.low};
    return {JoinSine(sine, cosine, cosineRest, sineRest, x),
            JoinSine(cosine, minusSine, cosineRest, sineRest, x)};
}

}  // namespace kfx::math
