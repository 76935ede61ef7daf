// SPDX-License-Identifier: MIT
// The exponential function in fixed point: the argument, reduced by multiples of ln 2 and halved some times,
// goes into the series; squaring undoes the halving (Brent, "Fast multiple-precision evaluation of elementary
// functions", Journal of the ACM 23, 1976).
#include "framework/math/exact_exponential.h"

#include "framework/math/phases.h"
#include "framework/math/rounding.h"
#include "framework/math/tables.h"

namespace kfx::math {
namespace {

constexpr int32_t kHalvings = 8;

// e^r for 0 <= r < ln 2. Each step of Horner's scheme adds an error of at most 2 units, and the next step
// makes the error before it negligible. Each squaring doubles the error and adds a unit.
WideNumber SeriesOfExponential(const WideNumber& r) {
    const WideNumber part = ShiftRight(r, kHalvings);
    uint32_t terms = 1;
    for (int32_t bits = 0; bits < 32 * r.size; ++terms) bits += kHalvings + BitLength(terms) - 1;
    const WideNumber one = WideInteger(r.size, 1);
    WideNumber sum = one;
    for (uint32_t k = terms; k > 0; --k) sum = Add(one, DivideWord(Multiply(part, sum), k));
    for (int32_t k = 0; k < kHalvings; ++k) sum = Multiply(sum, sum);
    return sum;
}

// The number rounded down, for magnitudes below 2^31.
int32_t FloorOf(const WideNumber& a) { return static_cast<int32_t>(a.words[a.size - kWholeWords]); }

}  // namespace

WidePower WideExponential(const WideNumber& x) {
    const WideNumber ln2 = WideFromTable(x.size, kWideLn2);
    auto n = static_cast<int32_t>(FloorOf(x) * 1.4426950408889634);
    const WideNumber multiple = MultiplyWord(ln2, static_cast<uint32_t>(n < 0 ? -n : n));
    WideNumber rest = n < 0 ? Add(x, multiple) : Subtract(x, multiple);
    for (; IsNegative(rest); --n) rest = Add(rest, ln2);
    for (; !IsNegative(Subtract(rest, ln2)); ++n) rest = Subtract(rest, ln2);
    return {SeriesOfExponential(rest), n};
}

double ExactExp(double x) {
    double value = 0;
    for (const int32_t size : kWideSizes) {
        const WidePower power = WideExponential(WideFromDouble(size, x));
        // The error of the argument, whose last places are cut off, is multiplied by the result: it is below
        // 2 units.
        if (RoundWide(power.value, kWideExponentialError + 1, power.exponent, &value)) break;
    }
    return value;
}

}  // namespace kfx::math
