// SPDX-License-Identifier: MIT
#include "framework/math/trigonometric_phase.h"

#include "framework/math/elementary.h"
#include "framework/math/phases.h"
#include "framework/math/quarter_turns.h"

namespace kfx {
namespace math {
namespace {

// Below these the results are the argument and 1: what follows in the series is less than half a last place.
constexpr double kSineIsArgument = 0x1p-26;
constexpr double kCosineIsOne = 0x1p-27;

// For all larger |x|.
Reduced<double> ReduceFar(double x) {
    const QuarterTurns turns = CountQuarterTurns(x, kLeastWideSize);
    // Eight bits number the step within the quarter, one rounds that number, the rest is the remainder, which
    // is taken from 1 when the number goes up.
    const uint64_t fraction = LeadingFraction(turns.fraction, 0);
    uint64_t n = static_cast<uint64_t>(turns.count) << 8 | fraction >> 56;
    const bool up = (fraction >> 55 & 1) != 0;
    const uint64_t turned = up ? ~uint64_t{0} : 0;
    const uint64_t above = (fraction << 8 | LeadingFraction(turns.fraction, 2) >> 56) ^ turned;
    const uint64_t below = LeadingFraction(turns.fraction, 2) << 8 ^ turned;
    // 53 bits each.
    const double high = static_cast<double>(above >> 11) * 0x1p-53;
    const double low = static_cast<double>((above & 0x7FF) << 42 | below >> 22) * 0x1p-106;
    n += up;
    const Pair<double> product = TwoProduct(high, kPiOver512Pair[0]);
    const double rest = product.low + (high * kPiOver512Pair[1] + low * kPiOver512Pair[0]);
    const Pair<double> r = FastTwoSum(product.high, rest);
    const bool negative = up != (x < 0);
    return {x < 0 ? 0 - n : n, negative ? Pair<double>{-r.high, -r.low} : r, 0x1p-105};
}

Reduced<double> Reduce(double x) { return Magnitude(x) <= kFarthestCodyWaite ? ReduceNear(x) : ReduceFar(x); }

// Arguments whose results need no computing.
bool SpecialSine(double x, double* sine) {
    *sine = Magnitude(x) <= kSineIsArgument ? x : x - x;
    return Magnitude(x) <= kSineIsArgument || x - x != 0;
}

bool SpecialCosine(double x, double* cosine) {
    *cosine = Magnitude(x) <= kCosineIsOne ? 1 : x - x;
    return Magnitude(x) <= kCosineIsOne || x - x != 0;
}

}  // namespace

bool TrySin(double x, double* sine) {
    if (SpecialSine(x, sine)) return true;
    const Rounded<double> rounded = SineAndCosineOf(Reduce(x)).sine;
    *sine = rounded.value;
    return rounded.sure;
}

bool TryCos(double x, double* cosine) {
    if (SpecialCosine(x, cosine)) return true;
    const Rounded<double> rounded = SineAndCosineOf(Reduce(x)).cosine;
    *cosine = rounded.value;
    return rounded.sure;
}

}  // namespace math

double Sin(double x) {
    double sine;
    return math::TrySin(x, &sine) ? sine : math::ExactSin(x);
}

double Cos(double x) {
    double cosine;
    return math::TryCos(x, &cosine) ? cosine : math::ExactCos(x);
}

}  // namespace kfx
