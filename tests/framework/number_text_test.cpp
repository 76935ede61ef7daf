// SPDX-License-Identifier: MIT
#include "framework/number_text.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <iterator>
#include <random>
#include <string>

namespace kfx {
namespace {

TEST(NumberText, What_was_written_unsigned_comes_back_with_the_same_bits) {
    for (const uint32_t value : {0u, 1u, 7u, 2147483647u, 2147483648u, 4294967295u}) {
        char text[16];
        std::snprintf(text, sizeof text, "%u", value);
        EXPECT_EQ(ParseDecimal(text), value) << text;
    }
}

TEST(NumberText, A_negative_number_is_its_twos_complement) {
    EXPECT_EQ(ParseDecimal("-1"), 0xFFFFFFFFu);
    EXPECT_EQ(ParseDecimal("-2147483648"), 0x80000000u);
}

TEST(NumberText, Numbers_beyond_32_bits_wrap) {
    EXPECT_EQ(ParseDecimal("4294967296"), 0u);
    EXPECT_EQ(ParseDecimal("4294967303"), 7u);
    EXPECT_EQ(ParseDecimal("-4294967297"), 0xFFFFFFFFu);
    EXPECT_EQ(ParseDecimal("100000000000000000000"), 1661992960u);
}

TEST(NumberText, Reading_starts_behind_white_space_and_stops_at_the_first_other_character) {
    EXPECT_EQ(ParseDecimal(" \t+12abc"), 12u);
    EXPECT_EQ(ParseDecimal("12.9"), 12u);
    EXPECT_EQ(ParseDecimal("1 2"), 1u);
}

TEST(NumberText, A_text_without_a_number_is_zero) {
    for (const char* text : {"", "abc", "-", "+-5", "- 5", "x1"}) EXPECT_EQ(ParseDecimal(text), 0u) << text;
}

TEST(ControlRange, Three_numbers_are_minimum_maximum_and_default) {
    ControlRange range;
    ASSERT_TRUE(ParseControlRange("-10,2880,45", &range));
    EXPECT_EQ(range.least, -10);
    EXPECT_EQ(range.most, 2880);
    EXPECT_EQ(range.standard, 45);
}

TEST(ControlRange, A_text_without_three_numbers_means_0_to_100) {
    for (const char* text : {"", "Angle:", "5", "5,9", "5;9;7"}) {
        ControlRange range = {1, 2, 3};
        EXPECT_FALSE(ParseControlRange(text, &range)) << text;
        EXPECT_EQ(range.least, 0) << text;
        EXPECT_EQ(range.most, 100) << text;
    }
}

// What the range texts have always been read with.
bool ScanRange(const char* text, ControlRange* range) {
    if (std::sscanf(text, "%d,%d,%d", &range->least, &range->most, &range->standard) == 3) return true;
    *range = {0, 100, 0};
    return false;
}

void ExpectAsScanned(const std::string& text) {
    ControlRange range, scanned;
    const bool found = ParseControlRange(text.c_str(), &range);
    EXPECT_EQ(found, ScanRange(text.c_str(), &scanned)) << '"' << text << '"';
    EXPECT_EQ(range.least, scanned.least) << '"' << text << '"';
    EXPECT_EQ(range.most, scanned.most) << '"' << text << '"';
    EXPECT_EQ(range.standard, scanned.standard) << '"' << text << '"';
}

TEST(ControlRange, A_text_is_read_as_the_c_library_scans_it) {
    for (const char* text : {"1,2,3",      " 1,\t2,\r\n3 and more",
                             "1 ,2,3",     "1, 2,3",
                             "+1,-2,+3",   "--1,2,3",
                             "+-1,2,3",    "- 1,2,3",
                             "-,2,3",      "0x10,2,3",
                             "010,08,-09", "1,2",
                             "1,2,",       "1,2,-",
                             "1,,3",       ",2,3",
                             "1.5,2,3",    "1,2,3,4",
                             "1,2,3.5",    "2147483647,-2147483648,0",
                             "\v1,\f2,3",  "\2401,2,3"})
        ExpectAsScanned(text);
    std::mt19937 random(1);
    const char* const pieces[] = {"0", "1", "9", "27", "2147483647", "-", "+",
                                  ",", ",", ",", " ",  "\t",         "x", "."};
    for (int i = 0; i < 20000; ++i) {
        std::string text;
        for (auto length = random() % 12; length > 0; --length) text += pieces[random() % std::size(pieces)];
        // Numbers beyond 32 bits are scanned differently from system to system.
        bool tooLong = false;
        size_t digits = 0;
        for (const char c : text) {
            digits = c >= '0' && c <= '9' ? digits + 1 : 0;
            tooLong = tooLong || digits > 9;
        }
#ifndef _WIN32
        if (tooLong) continue;
#endif
        ExpectAsScanned(text);
    }
}

TEST(ControlRange, A_number_beyond_32_bits_is_the_nearest_that_fits) {
    ControlRange range;
    ASSERT_TRUE(ParseControlRange("-2147483649,2147483648,100000000000000000000000", &range));
    EXPECT_EQ(range.least, INT32_MIN);
    EXPECT_EQ(range.most, INT32_MAX);
    EXPECT_EQ(range.standard, INT32_MAX);
    ASSERT_TRUE(ParseControlRange("-100000000000000000000000,4294967296,-0", &range));
    EXPECT_EQ(range.least, INT32_MIN);
    EXPECT_EQ(range.most, INT32_MAX);
    EXPECT_EQ(range.standard, 0);
}

TEST(ControlRange, Values_outside_move_to_the_nearest_end) {
    const ControlRange range = {4, 45, 5};
    EXPECT_EQ(ClampToRange(range, 3), 4);
    EXPECT_EQ(ClampToRange(range, 4), 4);
    EXPECT_EQ(ClampToRange(range, 45), 45);
    EXPECT_EQ(ClampToRange(range, 46), 45);
    EXPECT_EQ(ClampToRange(range, INT32_MIN), 4);
}

TEST(ShownPosition, Only_the_label_of_swirls_angle_counts_from_minus_1440) {
    EXPECT_EQ(ShownPosition(194, 0), -1440);
    EXPECT_EQ(ShownPosition(194, 1485), 45);
    EXPECT_EQ(ShownPosition(193, 1485), 1485);
    EXPECT_EQ(ShownPosition(195, 0), 0);
}

}  // namespace
}  // namespace kfx
