// SPDX-License-Identifier: MIT
// The same functions by MPFR, correctly rounded to doubles, subnormal ones included.
#pragma once

#include <cstdint>

namespace kfx {

double MpfrExp(double x);
double MpfrPow(double x, double y);
double MpfrSin(double x);
double MpfrCos(double x);
double MpfrHypot(double x, double y);

// How far a function's exact value is from the nearest number right between two doubles, as the negative
// binary logarithm of the distance over the last place: 60 means that 60 bits follow the last place before
// the value differs. For results that do not overflow.
enum class MathFunction { Exp, Sin, Cos, Pow };
int32_t HardnessOf(MathFunction function, double x, double y);

// The double nearest to the argument at which a function takes the value in the middle between `below` and
// the next double: of powers, the exponent for the given base.
double ArgumentOfMiddle(MathFunction function, double below, double base);

}  // namespace kfx
