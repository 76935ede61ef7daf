// SPDX-License-Identifier: MIT
// Constants of the elementary functions. make_tables.py computes them with whole numbers of some thousand
// bits; a test compares them with another library's.
#pragma once

#include <cstdint>

namespace kfx::math {

// ln 2 / 256 in three parts, the first two so short that their products with whole numbers up to 2^19 are
// exact.
extern const double kLn2Over256[3];

// 2^(j / 256) as pairs (nearest double, remainder).
extern const double kPowersOfTwo[2 * 256];

// pi / 512 in three parts, the first two so short that their products with whole numbers up to 2^23 are
// exact; and as a pair.
extern const double kPiOver512[3];
extern const double kPiOver512Pair[2];

// sin(j * pi / 512) for the first quarter turn as pairs.
extern const double kSines[2 * 257];

// ln 2: a multiple of 2^-42, and the rest.
extern const double kLn2[2];

// For significands from 0x3FE6A00000000000 (as bits of a double) on, in steps of 2^43: a factor c of at most
// 11 bits near the reciprocal, and -ln c as a multiple of 2^-42 and the rest. On both sides of 1 the factor
// is 1.
constexpr uint64_t kLeastSignificand = uint64_t{0x3FE6A} << 44;
extern const double kLogarithms[3 * 512];

// Fractions as words of 32 bits, the most significant first: ln 2, pi / 4, 2 / pi.
extern const uint32_t kWideLn2[48];
extern const uint32_t kWideQuarterPi[48];
constexpr int32_t kTwoOverPiWords = 86;
extern const uint32_t kTwoOverPi[kTwoOverPiWords];

}  // namespace kfx::math
