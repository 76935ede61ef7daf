// SPDX-License-Identifier: MIT
#include "framework/math/wide_number.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace kfx::math {
namespace {

// What 2^(32 * (size - kWholeWords)) units are.
constexpr int32_t kOneUnit = 32 * (kLeastWideSize - kWholeWords);

// The number `high` * 2^64 + `low`, rounded.
double Rounded(uint64_t high, uint64_t low) {
    WideNumber number = WideZero(kLeastWideSize);
    number.words[0] = static_cast<uint32_t>(low);
    number.words[1] = static_cast<uint32_t>(low >> 32);
    number.words[2] = static_cast<uint32_t>(high);
    number.words[3] = static_cast<uint32_t>(high >> 32);
    return RoundExactly(number, kOneUnit);
}

constexpr uint64_t kLargestExact = uint64_t{1} << 53;

TEST(WideNumber, Ties_go_to_even_wherever_the_highest_bit_is) {
    EXPECT_EQ(Rounded(0, kLargestExact + 1), 0x1p53);
    EXPECT_EQ(Rounded(0, kLargestExact + 3), 0x1p53 + 4);
    EXPECT_EQ(Rounded(kLargestExact + 1, 0), 0x1p117);
    EXPECT_EQ(Rounded(kLargestExact + 3, 0), 0x1.0000000000002p117);
    EXPECT_EQ(Rounded(1, uint64_t{1} << 11), 0x1p64);
    EXPECT_EQ(Rounded(1, uint64_t{3} << 11), 0x1.0000000000002p64);
}

TEST(WideNumber, Any_bit_below_a_tie_decides_it) {
    for (int bit = 0; bit < 64; ++bit)
        EXPECT_EQ(Rounded(kLargestExact + 1, uint64_t{1} << bit), 0x1.0000000000001p117) << bit;
    for (int bit = 0; bit < 11; ++bit)
        EXPECT_EQ(Rounded(1, uint64_t{1} << 11 | uint64_t{1} << bit), 0x1.0000000000001p64) << bit;
}

TEST(WideNumber, Numbers_that_fit_come_out_as_they_are) {
    for (int bit = 1; bit < 64; ++bit) {
        EXPECT_EQ(Rounded(0, uint64_t{1} << bit), static_cast<double>(uint64_t{1} << bit));
        EXPECT_EQ(Rounded(0, uint64_t{3} << (bit - 1)), static_cast<double>(uint64_t{3} << (bit - 1)));
    }
}

TEST(WideNumber, Doubles_are_taken_over_down_to_the_last_unit) {
    for (const int32_t size : kWideSizes) {
        const int32_t places = 32 * (size - kWholeWords);
        // The largest size has units that are no doubles.
        for (int32_t bit = std::max(0, places - 1022); bit < places + 62; ++bit) {
            const WideNumber number = WideFromDouble(size, std::ldexp(1, bit - places));
            for (int32_t k = 0; k < size; ++k)
                ASSERT_EQ(number.words[k], k == bit / 32 ? uint32_t{1} << bit % 32 : 0) << bit;
        }
    }
    EXPECT_EQ(WideFromDouble(kLeastWideSize, std::ldexp(3.75, -kOneUnit)).words[0], 3u) << "the rest is cut";
}

// A double of 2^85 has steps of 2^33.
TEST(WideNumber, Within_an_error_of_one_unit_a_tie_decides_nothing) {
    WideNumber number = WideZero(kLeastWideSize);
    number.words[1] = 1;
    number.words[2] = 1u << 21;
    double value = 0;
    EXPECT_FALSE(RoundWide(number, 0, kOneUnit, &value));
    number.words[0] = 1;
    EXPECT_FALSE(RoundWide(number, 0, kOneUnit, &value)) << "the tie itself goes to the even one";
    number.words[0] = 2;
    EXPECT_TRUE(RoundWide(number, 0, kOneUnit, &value));
    EXPECT_EQ(value, 0x1.0000000000001p85);
}

}  // namespace
}  // namespace kfx::math
