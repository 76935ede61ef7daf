// SPDX-License-Identifier: MIT
#include "tests/framework/math/mpfr_values.h"

#include <mpfr.h>

#include <algorithm>
#include <cmath>

namespace kfx {
namespace {

struct Number {
    explicit Number(int32_t bits) { mpfr_init2(value, bits); }
    ~Number() { mpfr_clear(value); }
    Number(const Number&) = delete;
    Number& operator=(const Number&) = delete;

    mpfr_t value;
};

constexpr int32_t kDoubleBits = 53;

struct DoubleRange {
    DoubleRange() {
        mpfr_set_emin(-1073);
        mpfr_set_emax(1024);
    }
    ~DoubleRange() {
        mpfr_set_emin(mpfr_get_emin_min());
        mpfr_set_emax(mpfr_get_emax_max());
    }
    DoubleRange(const DoubleRange&) = delete;
    DoubleRange& operator=(const DoubleRange&) = delete;
};

using Unary = int (*)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t);
using Binary = int (*)(mpfr_ptr, mpfr_srcptr, mpfr_srcptr, mpfr_rnd_t);

double Compute(Unary unary, Binary binary, double x, double y) {
    static Number a(kDoubleBits), b(kDoubleBits), result(kDoubleBits);
    mpfr_set_d(a.value, x, MPFR_RNDN);
    mpfr_set_d(b.value, y, MPFR_RNDN);
    const DoubleRange range;
    const int rounded =
        unary ? unary(result.value, a.value, MPFR_RNDN) : binary(result.value, a.value, b.value, MPFR_RNDN);
    mpfr_subnormalize(result.value, rounded, MPFR_RNDN);
    return mpfr_get_d(result.value, MPFR_RNDN);
}

}  // namespace

double MpfrExp(double x) { return Compute(mpfr_exp, nullptr, x, 0); }
double MpfrPow(double x, double y) { return Compute(nullptr, mpfr_pow, x, y); }
double MpfrSin(double x) { return Compute(mpfr_sin, nullptr, x, 0); }
double MpfrCos(double x) { return Compute(mpfr_cos, nullptr, x, 0); }
double MpfrHypot(double x, double y) { return Compute(nullptr, mpfr_hypot, x, y); }

int32_t HardnessOf(MathFunction function, double x, double y) {
    constexpr int32_t kBits = 300;
    static Number a(kDoubleBits), b(kDoubleBits), result(kBits), whole(kBits);
    mpfr_set_d(a.value, x, MPFR_RNDN);
    mpfr_set_d(b.value, y, MPFR_RNDN);
    switch (function) {
        case MathFunction::Exp:
            mpfr_exp(result.value, a.value, MPFR_RNDN);
            break;
        case MathFunction::Sin:
            mpfr_sin(result.value, a.value, MPFR_RNDN);
            break;
        case MathFunction::Cos:
            mpfr_cos(result.value, a.value, MPFR_RNDN);
            break;
        case MathFunction::Pow:
            mpfr_pow(result.value, a.value, b.value, MPFR_RNDN);
            break;
    }
    if (!mpfr_regular_p(result.value)) return 0;
    // In half last places the places between doubles are the odd numbers. The last place of a subnormal
    // number is 2^-1074.
    const auto halves = std::min<mpfr_exp_t>(kDoubleBits + 1 - mpfr_get_exp(result.value), 1075);
    mpfr_mul_2si(result.value, result.value, halves, MPFR_RNDN);
    mpfr_sub_ui(whole.value, result.value, 1, MPFR_RNDN);
    mpfr_div_2ui(whole.value, whole.value, 1, MPFR_RNDN);
    mpfr_rint(whole.value, whole.value, MPFR_RNDN);
    mpfr_mul_2ui(whole.value, whole.value, 1, MPFR_RNDN);
    mpfr_add_ui(whole.value, whole.value, 1, MPFR_RNDN);
    mpfr_sub(result.value, result.value, whole.value, MPFR_RNDN);
    return mpfr_zero_p(result.value) ? kBits : static_cast<int32_t>(1 - mpfr_get_exp(result.value));
}

double ArgumentOfMiddle(MathFunction function, double below, double base) {
    constexpr int32_t kBits = 160;
    static Number middle(kBits), argument(kBits), logarithm(kBits);
    mpfr_set_d(middle.value, below, MPFR_RNDN);
    mpfr_add_d(middle.value, middle.value, std::nextafter(below, INFINITY), MPFR_RNDN);
    mpfr_div_2ui(middle.value, middle.value, 1, MPFR_RNDN);
    switch (function) {
        case MathFunction::Exp:
            mpfr_log(argument.value, middle.value, MPFR_RNDN);
            break;
        case MathFunction::Sin:
            mpfr_asin(argument.value, middle.value, MPFR_RNDN);
            break;
        case MathFunction::Cos:
            mpfr_acos(argument.value, middle.value, MPFR_RNDN);
            break;
        case MathFunction::Pow:
            mpfr_set_d(logarithm.value, base, MPFR_RNDN);
            mpfr_log(logarithm.value, logarithm.value, MPFR_RNDN);
            mpfr_log(argument.value, middle.value, MPFR_RNDN);
            mpfr_div(argument.value, argument.value, logarithm.value, MPFR_RNDN);
            break;
    }
    return mpfr_get_d(argument.value, MPFR_RNDN);
}

}  // namespace kfx
