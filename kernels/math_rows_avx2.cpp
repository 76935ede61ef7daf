// SPDX-License-Identifier: MIT
// The first phases of the elementary functions in lanes. Arguments that they cannot decide, or that lie
// outside the common range, go through the functions for one number. Compiled for AVX2.
#include "framework/cpu.h"

#if KFX_HAS_AVX2
#include "framework/math/elementary.h"
#include "framework/math/exponential_phase.h"
#include "framework/math/logarithm_phase.h"
#include "framework/math/trigonometric_phase.h"
#include "kernels/math_lanes.h"
#include "kernels/math_rows.h"

namespace kfx {
namespace {

using namespace math;

constexpr int32_t kLanes = 4;

KFX_INLINE Lanes Load(const double* from) { return _mm256_loadu_pd(from); }
KFX_INLINE void Store(Lanes values, double* to) { _mm256_storeu_pd(to, values.values); }

KFX_INLINE LaneMask IsWithin(Lanes x, double least, double most) {
    return (Lanes(least) <= x) & (x <= Lanes(most));
}

// Rounds powers that are normal numbers.
KFX_INLINE Rounded<Lanes> RoundPowers(const ScaledPair<Lanes>& power, Lanes relativeError) {
    const Rounded<Lanes> rounded = RoundPair(power.value, power.value.high * relativeError);
    const LaneBits exponents = (power.steps & LaneBits(~uint64_t{255})) << 44;
    return {rounded.value * FromBits(exponents + BitsOf(Lanes(1))), rounded.sure};
}

// Results in this range of exponents neither overflow nor lose bits.
constexpr double kGreatestExponent = 700;

// Beyond these bounds sines take another way.
constexpr double kLeastAngle = 0x1p-26;

}  // namespace

void ExpRowAvx2(const double* x, int32_t count, double* values) {
    for (int32_t i = 0; i < count; i += kLanes) {
        const Lanes argument = Load(x + i);
        const Rounded<Lanes> power = RoundPowers(ExponentialOf(argument, Lanes(0)), Lanes(kExponentialError));
        const LaneMask sure = power.sure & IsWithin(argument, -kGreatestExponent, kGreatestExponent);
        Store(power.value, values + i);
        if (AllSet(sure)) continue;
        double arguments[kLanes];
        Store(argument, arguments);
        for (int32_t k = 0; k < kLanes; ++k) values[i + k] = Exp(arguments[k]);
    }
}

void PowRowAvx2(const double* x, double exponent, int32_t count, double* values) {
    const bool isCommon = Magnitude(exponent) <= 0x1p65 && Magnitude(exponent) >= 0x1p-66;
    const Lanes y(isCommon ? exponent : 1);
    for (int32_t i = 0; i < count; i += kLanes) {
        const Lanes base = Load(x + i);
        const Pair<Lanes> logarithm = LogarithmOf(base, Lanes(0));
        const Pair<Lanes> product = TwoProduct(y, logarithm.high);
        const Pair<Lanes> power = FastTwoSum(product.high, product.low + y * logarithm.low);
        const Lanes error = Lanes(kExponentialError) + Magnitude(power.high) * Lanes(kLogarithmError);
        const Rounded<Lanes> result = RoundPowers(ExponentialOf(power.high, power.low), error);
        const LaneMask sure = result.sure & IsWithin(base, 0x1p-1022, 0x1p1023) &
                              IsWithin(power.high, -kGreatestExponent, kGreatestExponent);
        Store(result.value, values + i);
        if (isCommon && AllSet(sure)) continue;
        double bases[kLanes];
        Store(base, bases);
        for (int32_t k = 0; k < kLanes; ++k) values[i + k] = Pow(bases[k], exponent);
    }
}

void SinRowAvx2(const double* x, int32_t count, double* sines) {
    for (int32_t i = 0; i < count; i += kLanes) {
        const Lanes angle = Load(x + i);
        const Rounded<Lanes> sine = SineAndCosineOf(ReduceNear(angle)).sine;
        const LaneMask sure = sine.sure & IsWithin(Magnitude(angle), kLeastAngle, kFarthestCodyWaite);
        Store(sine.value, sines + i);
        if (AllSet(sure)) continue;
        double angles[kLanes];
        Store(angle, angles);
        for (int32_t k = 0; k < kLanes; ++k) sines[i + k] = Sin(angles[k]);
    }
}

void SinCosRowAvx2(const double* x, int32_t count, double* sines, double* cosines) {
    for (int32_t i = 0; i < count; i += kLanes) {
        const Lanes angle = Load(x + i);
        const SineAndCosine<Lanes> both = SineAndCosineOf(ReduceNear(angle));
        const LaneMask sure =
            both.sine.sure & both.cosine.sure & IsWithin(Magnitude(angle), kLeastAngle, kFarthestCodyWaite);
        Store(both.sine.value, sines + i);
        Store(both.cosine.value, cosines + i);
        if (AllSet(sure)) continue;
        double angles[kLanes];
        Store(angle, angles);
        for (int32_t k = 0; k < kLanes; ++k) {
            sines[i + k] = Sin(angles[k]);
            cosines[i + k] = Cos(angles[k]);
        }
    }
}

}  // namespace kfx
#endif
