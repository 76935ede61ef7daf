// SPDX-License-Identifier: MIT
// Fixed-point numbers of some hundred bits, in words of 32 bits. They decide how a result rounds when pairs
// of doubles cannot.
#pragma once

#include <cstdint>

namespace kfx::math {

constexpr int32_t kWholeWords = 2;
constexpr int32_t kLeastWideSize = 8;
constexpr int32_t kMostWideSize = 50;

// The sizes that are tried one after the other. The last has more places than any result needs: the hardest
// ones known need fewer than 130, and it is most unlikely that others lie as near to a rounding boundary.
constexpr int32_t kWideSizes[] = {kLeastWideSize, 14, 26, kMostWideSize};

// words[0] is the least significant one; two's complement. The value is the whole number over
// 2^(32 * (size - kWholeWords)); one such unit is the "unit" of the errors below.
struct WideNumber {
    int32_t size;
    uint32_t words[kMostWideSize];
};

WideNumber WideZero(int32_t size);
WideNumber WideInteger(int32_t size, uint32_t number);

// A double below 2^62 in magnitude; places beyond the last are cut, an error below 1 unit.
WideNumber WideFromDouble(int32_t size, double x);

// A fraction as words, the most significant first; an error below 1 unit.
WideNumber WideFromTable(int32_t size, const uint32_t* words);

bool IsNegative(const WideNumber& a);
WideNumber Add(const WideNumber& a, const WideNumber& b);
WideNumber Subtract(const WideNumber& a, const WideNumber& b);
WideNumber Negate(const WideNumber& a);

// These are for numbers that are not negative; errors below 1 unit.
WideNumber Multiply(const WideNumber& a, const WideNumber& b);
WideNumber MultiplyWord(const WideNumber& a, uint32_t b);
WideNumber DivideWord(const WideNumber& a, uint32_t b);
WideNumber ShiftLeft(const WideNumber& a, int32_t bits);
WideNumber ShiftRight(const WideNumber& a, int32_t bits);

// a * 2^exponent rounded to nearest, ties to even; a is not negative.
double RoundExactly(const WideNumber& a, int32_t exponent);

// The same where a is known up to 2^errorBits units and its exact value is no tie. False: the error is too
// large to tell how it rounds.
bool RoundWide(const WideNumber& a, int32_t errorBits, int32_t exponent, double* value);

}  // namespace kfx::math
