// SPDX-License-Identifier: MIT
// Elementary functions whose every result is the exact value rounded once, to the nearest double, ties to
// even. That leaves one possible answer, so results are the same with every compiler and library; they depend
// on neither x87 code nor fused multiply-adds. The processor must round to nearest, as it does by default.
//
// Each function first computes in pairs of doubles with a known bound of the error and checks whether all
// values within the bound round to the same double (Ziv, "Fast evaluation of elementary mathematical
// functions with correctly rounded last bit", ACM TOMS 17, 1991). In fewer than one in five thousand of the
// calls that effects make, they do not. The value is then computed again in fixed point, with more and more
// places until they do. kernels/math_rows.h has the same functions for many numbers at once.
#pragma once

namespace kfx {

// Infinities, NaN, zeros and signs are as in annex F of the C standard; errno is left alone. Angles are
// radians of any size.
double Exp(double x);
double Pow(double x, double y);
double Sin(double x);
double Cos(double x);

// The square root of x^2 + y^2, which overflows only when the result does.
double Hypot(double x, double y);

}  // namespace kfx
