// SPDX-License-Identifier: MIT
#include "framework/math/quarter_turns.h"

#include "framework/math/double_double.h"
#include "framework/math/tables.h"

namespace kfx::math {
namespace {

// The 32 bits of 2 / pi from bit `first` on; bit 0 stands right behind the point, those before it are 0.
uint32_t BitsOfTwoOverPi(int32_t first) {
    if (first <= -32) return 0;
    const int32_t word = (first + 32) / 32 - 1;  // rounded down, from -1 on
    const int32_t part = first - 32 * word;
    const uint64_t upper = word < 0 ? 0 : kTwoOverPi[word];
    const uint64_t lower = kTwoOverPi[word + 1];
    return static_cast<uint32_t>((upper << 32 | lower) >> (32 - part));
}

}  // namespace

QuarterTurns CountQuarterTurns(double x, int32_t size) {
    const uint64_t bits = BitsOf(x);
    const uint64_t significand = (bits & ~(~uint64_t{0} << 52)) | uint64_t{1} << 52;
    const int32_t exponent = static_cast<int32_t>(bits >> 52 & 0x7FF) - 1075;
    // The product of the significand and a window of 2 / pi: one word before the point, and behind it two
    // more than asked for, which take up the window's error times the significand.
    const int32_t fractions = size - kWholeWords;
    const int32_t count = fractions + 3;
    uint32_t product[kMostWideSize + 2] = {};
    uint64_t carry = 0, upperCarry = 0;
    uint32_t before = 0;
    for (int32_t k = 0; k < count; ++k) {
        const uint32_t window = BitsOfTwoOverPi(exponent + 32 * (fractions + 1 - k));
        carry += uint64_t{window} * static_cast<uint32_t>(significand);
        upperCarry += uint64_t{before} * (significand >> 32);
        const uint64_t sum = uint64_t{static_cast<uint32_t>(carry)} + static_cast<uint32_t>(upperCarry);
        product[k] = static_cast<uint32_t>(sum);
        carry = (carry >> 32) + (sum >> 32);
        upperCarry >>= 32;
        before = window;
    }
    QuarterTurns turns = {product[count - 1], WideZero(size)};
    for (int32_t k = 0; k < fractions; ++k) turns.fraction.words[k] = product[k + 2];
    return turns;
}

uint64_t LeadingFraction(const WideNumber& fraction, int32_t first) {
    const int32_t top = fraction.size - kWholeWords - 1 - first;
    return uint64_t{fraction.words[top]} << 32 | fraction.words[top - 1];
}

}  // namespace kfx::math
