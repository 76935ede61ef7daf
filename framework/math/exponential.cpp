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

}  // namespace kfx
