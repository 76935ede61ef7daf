// SPDX-License-Identifier: MIT
// Sine and cosine in fixed point: the argument is reduced to an eighth turn, the series do the rest.
#include "framework/math/double_double.h"
#include "framework/math/phases.h"
#include "framework/math/quarter_turns.h"
#include "framework/math/rounding.h"
#include "framework/math/tables.h"

namespace kfx::math {
namespace {

constexpr int32_t kErrorBits = 6;

// sin t / t (odd = 1) or cos t (odd = 0) for 0 <= t <= pi / 4, from the square of t. Each step of Horner's
// scheme adds an error of at most 3 units, and the next step keeps only a part of it.
WideNumber Series(const WideNumber& square, uint32_t odd) {
    uint32_t terms = 1;
    for (int32_t bits = 0; bits < 32 * square.size; ++terms) bits += 2 * (BitLength(terms) - 1);
    const WideNumber one = WideInteger(square.size, 1);
    WideNumber sum = one;
    for (uint32_t k = terms; k > 0; --k)
        sum = Subtract(one, DivideWord(Multiply(square, sum), (2 * k + odd) * (2 * k + odd - 1)));
    return sum;
}

// The sine of |x| and `quarters` quarter turns.
double ExactSineFrom(double x, uint32_t quarters) {
    double value = 0;
    bool negative = false;
    for (const int32_t size : kWideSizes) {
        const QuarterTurns turns = CountQuarterTurns(x, size);
        const bool up = LeadingFraction(turns.fraction, 0) >> 63 != 0;
        const WideNumber fraction = up ? Subtract(WideInteger(size, 1), turns.fraction) : turns.fraction;
        const uint32_t quarter = turns.count + quarters + up;
        const WideNumber angle = ShiftLeft(Multiply(fraction, WideFromTable(size, kWideQuarterPi)), 1);
        const WideNumber square = Multiply(angle, angle);
        const bool isSine = quarter % 2 == 0;
        const WideNumber length = isSine ? Multiply(angle, Series(square, 1)) : Series(square, 0);
        negative = (quarter / 2 % 2 != 0) != (isSine && up);
        if (RoundWide(length, kErrorBits, 0, &value)) break;
    }
    return negative ? -value : value;
}

}  // namespace

double ExactSin(double x) {
    const double sine = ExactSineFrom(x, 0);
    return x < 0 ? -sine : sine;
}

double ExactCos(double x) { return ExactSineFrom(x, 1); }

}  // namespace kfx::math
