// SPDX-License-Identifier: MIT
// Powers in fixed point. The logarithm is Newton's step from the one in doubles, with as many terms as it
// takes: from an approximation a of ln m, ln m = a + ln(1 + (m e^-a - 1)).
#include "framework/math/exact_exponential.h"
#include "framework/math/logarithm_phase.h"
#include "framework/math/phases.h"
#include "framework/math/rounding.h"

namespace kfx::math {
namespace {

// significand * 2^exponent with an odd significand.
struct OddNumber {
    uint64_t significand;
    int32_t exponent;
};

OddNumber MakeOdd(double x) {
    const uint64_t bits = BitsOf(x);
    const auto field = static_cast<int32_t>(bits >> 52 & 0x7FF);
    OddNumber odd = {bits & ~(~uint64_t{0} << 52), field == 0 ? -1074 : field - 1075};
    if (field != 0) odd.significand |= uint64_t{1} << 52;
    while ((odd.significand & 1) == 0) {
        odd.significand >>= 1;
        ++odd.exponent;
    }
    return odd;
}

// Replaces a number by its square root. False: the root has infinitely many places.
bool TakeRoot(OddNumber* x) {
    uint64_t root = 0;
    for (uint64_t bit = uint64_t{1} << 26; bit != 0; bit >>= 1)
        if ((root | bit) * (root | bit) <= x->significand) root |= bit;
    if (root * root != x->significand || x->exponent % 2 != 0) return false;
    *x = {root, x->exponent / 2};
    return true;
}

// Finds the powers that are doubles or lie exactly between two doubles. Only for these no number of places
// would be enough. They are few: x must be the root that y asks for, and the power must fit into 54 bits
// (Lauter and Lefevre, "An efficient rounding boundary test for pow(x, y) in double precision", IEEE
// Transactions on Computers 58, 2009).
bool FindShortPower(double x, double y, double* value) {
    OddNumber base = MakeOdd(x);
    const OddNumber power = MakeOdd(Magnitude(y));
    for (int32_t k = power.exponent; k < 0; ++k)
        if (!TakeRoot(&base)) return false;
    const double exponent = y * Scale(1, power.exponent < 0 ? -power.exponent : 0);
    if (base.significand == 1) {
        *value = RoundScaled(1, false, static_cast<int32_t>(base.exponent * exponent));
        return true;
    }
    if (y < 0 || exponent > 34) return false;  // 3^34 has 54 bits
    const auto times = static_cast<int32_t>(exponent);
    uint64_t product = 1;
    for (int32_t k = 0; k < times; ++k) {
        if (product > (uint64_t{1} << 54) / base.significand) return false;
        product *= base.significand;
    }
    *value = RoundScaled(product, false, base.exponent * times);
    return true;
}

constexpr int32_t kLogarithmErrorBits = 17;
constexpr int32_t kBitsOfFirstLogarithm = 60;  // at least this many places are right

// ln x with an error below 2^kLogarithmErrorBits units, for normal numbers times 2^shift: nearly all of it is
// that of the exponential function.
WideNumber WideLogarithm(double x, int32_t shift, int32_t size) {
    const uint64_t fraction = BitsOf(x) & ~(~uint64_t{0} << 52);
    const int32_t exponent = static_cast<int32_t>(BitsOf(x) >> 52) - 1023 + shift;
    const double m = FromBits(fraction | BitsOf(1.0));
    const Pair<double> first = LogarithmOf(m, 0.0);
    const WideNumber start = Add(WideFromDouble(size, first.high), WideFromDouble(size, first.low));
    const WidePower inverse = WideExponential(Negate(start));
    const WideNumber quotient =
        ShiftRight(Multiply(WideFromDouble(size, m), inverse.value), -inverse.exponent);
    const WideNumber difference = Subtract(quotient, WideInteger(size, 1));
    const bool negative = IsNegative(difference);
    const WideNumber z = negative ? Negate(difference) : difference;
    WideNumber result = start;
    WideNumber power = z;
    for (uint32_t k = 1; static_cast<int32_t>(k) * kBitsOfFirstLogarithm < 32 * size; ++k) {
        const WideNumber term = DivideWord(power, k);
        result = negative || k % 2 == 0 ? Subtract(result, term) : Add(result, term);
        power = Multiply(power, z);
    }
    const WideNumber ln2 = WideFromTable(size, kWideLn2);
    const WideNumber twos = MultiplyWord(ln2, static_cast<uint32_t>(exponent < 0 ? -exponent : exponent));
    return exponent < 0 ? Subtract(result, twos) : Add(result, twos);
}

}  // namespace

double ExactPow(double x, double y) {
    double value = 0;
    if (FindShortPower(x, y, &value)) return value;
    const bool isSubnormal = x < 0x1p-1022;
    const OddNumber factor = MakeOdd(Magnitude(y));
    for (const int32_t size : kWideSizes) {
        const WideNumber logarithm = WideLogarithm(isSubnormal ? x * 0x1p54 : x, isSubnormal ? -54 : 0, size);
        const bool below = IsNegative(logarithm);
        const WideNumber length = below ? Negate(logarithm) : logarithm;
        const WideNumber upper =
            ShiftLeft(MultiplyWord(length, static_cast<uint32_t>(factor.significand >> 32)), 32);
        WideNumber product = Add(upper, MultiplyWord(length, static_cast<uint32_t>(factor.significand)));
        product =
            factor.exponent < 0 ? ShiftRight(product, -factor.exponent) : ShiftLeft(product, factor.exponent);
        const WidePower power = WideExponential(below == (y < 0) ? product : Negate(product));
        // The product's error grows with the factor, and with the result, which is at most 2.
        const int32_t grown = kLogarithmErrorBits + BitLength(factor.significand) + factor.exponent;
        const int32_t errorBits = (grown > kWideExponentialError ? grown : kWideExponentialError) + 3;
        if (RoundWide(power.value, errorBits, power.exponent, &value)) break;
    }
    return value;
}

}  // namespace kfx::math
