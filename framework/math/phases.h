// SPDX-License-Identifier: MIT
// The two phases of each elementary function. Tests use them one by one.
#pragma once

#include <cstdint>

namespace kfx::math {

// False: the pairs of doubles do not tell how the value rounds; `*value` must not be used then.
bool TryExp(double x, double* value);
bool TryPow(double x, double y, double* value);
bool TrySin(double x, double* sine);
bool TryCos(double x, double* cosine);
bool TryHypot(double x, double y, double* value);

// Computed in fixed point with as many places as necessary. For finite arguments whose results are not
// certain to overflow or to round to 0, and that are not so small that the result is 1 or the argument.
double ExactExp(double x);
double ExactPow(double x, double y);  // of a positive x other than 1
double ExactSin(double x);
double ExactCos(double x);
// Both positive, the smaller side more than kLeastSideRatio times the larger.
double ExactHypot(double larger, double smaller);

// A smaller side of at most 2^-kSideRatioBits times the larger does not change the larger one's last place.
constexpr int32_t kSideRatioBits = 28;
constexpr double kLeastSideRatio = 1.0 / (1 << kSideRatioBits);

}  // namespace kfx::math
