// SPDX-License-Identifier: MIT
#include "framework/number_text.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace kfx {
namespace {

TEST(NumberText, what_was_written_unsigned_comes_back_with_the_same_bits) {
    for (const uint32_t value : {0u, 1u, 7u, 2147483647u, 2147483648u, 4294967295u}) {
        char text[16];
        std::snprintf(text, sizeof text, "%u", value);
        EXPECT_EQ(ParseDecimal(text), value) << text;
    }
}

TEST(NumberText, a_negative_number_is_its_two_s_complement) {
    EXPECT_EQ(ParseDecimal("-1"), 0xFFFFFFFFu);
    EXPECT_EQ(ParseDecimal("-2147483648"), 0x80000000u);
}

TEST(NumberText, numbers_beyond_32_bits_wrap) {
    EXPECT_EQ(ParseDecimal("4294967296"), 0u);
    EXPECT_EQ(ParseDecimal("4294967303"), 7u);
    EXPECT_EQ(ParseDecimal("-4294967297"), 0xFFFFFFFFu);
    EXPECT_EQ(ParseDecimal("100000000000000000000"), 1661992960u);
}

TEST(NumberText, reading_starts_behind_white_space_and_stops_at_the_first_other_character) {
    EXPECT_EQ(ParseDecimal(" \t+12abc"), 12u);
    EXPECT_EQ(ParseDecimal("12.9"), 12u);
    EXPECT_EQ(ParseDecimal("1 2"), 1u);
}

TEST(NumberText, a_text_without_a_number_is_zero) {
    for (const char* text : {"", "abc", "-", "+-5", "- 5", "x1"}) EXPECT_EQ(ParseDecimal(text), 0u) << text;
}

TEST(ControlRange, three_numbers_are_minimum_maximum_and_default) {
    ControlRange range;
    ASSERT_TRUE(ParseControlRange("-10,2880,45", &range));
    EXPECT_EQ(range.least, -10);
    EXPECT_EQ(range.most, 2880);
    EXPECT_EQ(range.standard, 45);
}

TEST(ControlRange, a_text_without_three_numbers_means_0_to_100) {
    for (const char* text : {"", "Angle:", "5", "5,9", "5;9;7"}) {
        ControlRange range = {1, 2, 3};
        EXPECT_FALSE(ParseControlRange(text, &range)) << text;
        EXPECT_EQ(range.least, 0) << text;
        EXPECT_EQ(range.most, 100) << text;
    }
}

TEST(ControlRange, values_outside_move_to_the_nearest_end) {
    const ControlRange range = {4, 45, 5};
    EXPECT_EQ(ClampToRange(range, 3), 4);
    EXPECT_EQ(ClampToRange(range, 4), 4);
    EXPECT_EQ(ClampToRange(range, 45), 45);
    EXPECT_EQ(ClampToRange(range, 46), 45);
    EXPECT_EQ(ClampToRange(range, INT32_MIN), 4);
}

TEST(ShownPosition, only_the_label_of_swirls_angle_counts_from_minus_1440) {
    EXPECT_EQ(ShownPosition(194, 0), -1440);
    EXPECT_EQ(ShownPosition(194, 1485), 45);
    EXPECT_EQ(ShownPosition(193, 1485), 1485);
    EXPECT_EQ(ShownPosition(195, 0), 0);
}

}  // namespace
}  // namespace kfx
