// SPDX-License-Identifier: MIT
#include "framework/math/exponential_phase.h"

#include "framework/math/elementary.h"
#include "framework/math/finish.h"
#include "framework/math/phases.h"

namespace kfx {
namespace math {

bool TryExp(double x, double* value) {
    // Also false for a NaN.
    if (!(Magnitude(x) < 800)) {
        *value = x > 0 ? kInfinity : x < 0 ? 0 : x;
        return true;
    }
    return RoundPower(ExponentialOf(x, 0.0), kExponentialError, value);
}

}  // namespace math

double Exp(double x) {
    double value;
    return math::TryExp(x, &value) ? value : math::ExactExp(x);
}

void ExpRow(const double* x, int32_t count, double* values) {
    int32_t done = 0;
#if KFX_HAS_AVX2
    if (UseAvx2()) {
        done = count & ~3;
        math::ExpRowAvx2(x, done, values);
    }
#endif
    for (int32_t i = done; i < count; ++i) values[i] = Exp(x[i]);
}

}  // namespace kfx
