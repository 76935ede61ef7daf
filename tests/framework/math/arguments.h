// SPDX-License-Identifier: MIT
// Arguments for tests of the elementary functions: of the kinds that effects use, of any bits, and extreme
// ones.
#pragma once

#include <cstdint>
#include <random>
#include <vector>

namespace kfx {

using Random = std::mt19937_64;

// In [low, high).
double Between(Random& random, double low, double high);

// Any sign, exponent and significand; now and then a NaN or an infinity.
double AnyBits(Random& random);

// Any sign, an exponent of base 2 in [low, high], any significand.
double AnyOfExponents(Random& random, int32_t low, int32_t high);

// A number with few significant bits: sums and powers of such are exact or lie right between two doubles.
double FewBits(Random& random, int32_t bits, int32_t low, int32_t high);

// Radians of a whole number of degrees, or of a part of it that falls off like the square of a distance: what
// turning effects ask for.
double AnyAngle(Random& random);

// A double below 1 by 2^-53 times an odd number of few bits, or above it: where results next to 1 are
// rounded.
double NearOne(Random& random);

// A subnormal number of at most so many bits, zero included; small ones are as likely as large ones.
double AnySubnormal(Random& random, int32_t bits);

// Zeros, infinities, NaN, the ends of the normal and the subnormal range, 1 and its neighbours, whole
// numbers, all with both signs.
std::vector<double> ExtremeArguments();

// Bit for bit; NaNs equal one another.
bool SameNumber(double a, double b);

}  // namespace kfx
