// SPDX-License-Identifier: MIT
#include "framework/math/elementary.h"
#include "framework/math/finish.h"
#include "framework/math/logarithm_phase.h"
#include "framework/math/phases.h"

namespace kfx {
namespace math {
namespace {

bool IsInteger(double x) {
    const double size = Magnitude(x);
    if (size >= 0x1p52) return true;
    return (size + 0x1p52) - 0x1p52 == size;
}

bool IsOddInteger(double x) { return Magnitude(x) < 0x1p53 && IsInteger(x) && !IsInteger(x * 0.5); }

// Powers for which annex F of the C standard prescribes a value. False: the power is none of these, but e^(y
// ln x).
bool SpecialPower(double x, double y, double* value) {
    const double size = Magnitude(x);
    const double sign = (BitsOf(x) >> 63) != 0 && IsOddInteger(y) ? -1.0 : 1.0;
    if (y == 0 || x == 1)
        *value = 1;
    else if (x != x || y != y)
        *value = x + y;
    else if (Magnitude(y) == kInfinity)
        *value = size == 1 ? 1 : (size > 1) == (y > 0) ? kInfinity : 0;
    else if (x == 0 || size == kInfinity)
        *value = sign * ((x == 0) == (y > 0) ? 0 : kInfinity);
    else if (x < 0 && !IsInteger(y))
        *value = std::numeric_limits<double>::quiet_NaN();
    else if (size == 1)
        *value = sign;
    else
        return false;
    return true;
}

// x^y for positive x. Beyond these exponents the result is out of range or rounds to 1, whatever the base.
bool TryPositivePower(double x, double y, double* value) {
    if (Magnitude(y) >= 0x1p65) {
        *value = (x > 1) == (y > 0) ? kInfinity : 0;
        return true;
    }
    if (Magnitude(y) < 0x1p-66) {
        *value = 1;
        return true;
    }
    const bool isSubnormal = x < 0x1p-1022;
    const Pair<double> logarithm = LogarithmOf(isSubnormal ? x * 0x1p54 : x, isSubnormal ? -54.0 : 0.0);
    const Pair<double> product = TwoProduct(y, logarithm.high);
    const Pair<double> exponent = FastTwoSum(product.high, product.low + y * logarithm.low);
    if (!(Magnitude(exponent.high) < 760)) {
        *value = exponent.high > 0 ? kInfinity : 0;
        return true;
    }
    return RoundPower(ExponentialOf(exponent.high, exponent.low),
                      kExponentialError + Magnitude(exponent.high) * kLogarithmError, value);
}

}  // namespace

bool TryPow(double x, double y, double* value) {
    if (SpecialPower(x, y, value)) return true;
    const bool sure = TryPositivePower(Magnitude(x), y, value);
    if (x < 0 && IsOddInteger(y)) *value = -*value;
    return sure;
}

}  // namespace math

double Pow(double x, double y) {
    double value;
    if (math::TryPow(x, y, &value)) return value;
    value = math::ExactPow(math::Magnitude(x), y);
    return x < 0 && math::IsOddInteger(y) ? -value : value;
}

}  // namespace kfx
