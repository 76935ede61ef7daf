// SPDX-License-Identifier: MIT
#include "builder/palette_order.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "tests/builder/random_palette.h"
#include "tests/reference/remap_reference.h"

namespace kfx::test {
namespace {

TEST(PaletteOrder, Luminance_cuts_each_term_on_its_own) {
    EXPECT_EQ(LuminanceOf(0, 0, 0), 0);
    EXPECT_EQ(LuminanceOf(255, 255, 255), 255);
    EXPECT_EQ(LuminanceOf(3, 1, 9), 0) << "0.9 + 0.6 + 0.99";
    EXPECT_EQ(LuminanceOf(4, 2, 10), 3) << "1.2 + 1.2 + 1.1";
}

TEST(PaletteOrder, Distance_weighs_red_3_green_4_and_blue_2) {
    const uint8_t entry[] = {10, 20, 30};
    EXPECT_EQ(ColorDistance(entry, 10, 20, 30), 0);
    EXPECT_EQ(ColorDistance(entry, 15, 20, 30), 75);
    EXPECT_EQ(ColorDistance(entry, 10, 15, 30), 100);
    EXPECT_EQ(ColorDistance(entry, 10, 20, 35), 50);
}

TEST(PaletteOrder, Nearest_prefers_an_exact_match_then_the_lowest_index_of_the_least_distance) {
    const uint8_t palette[] = {10, 0, 0, 0, 0, 0, 10, 0, 0, 20, 0, 0};
    EXPECT_EQ(NearestEntry(palette, 4, 10, 0, 0), 0);
    EXPECT_EQ(NearestEntry(palette, 4, 15, 0, 0), 0);
    EXPECT_EQ(NearestEntry(palette, 4, 16, 0, 0), 3);
    EXPECT_EQ(NearestEntry(palette, 4, 4, 0, 0), 1);
    EXPECT_EQ(NearestEntry(palette, 0, 4, 0, 0), 0);
    std::mt19937 random(1);
    uint8_t many[kPaletteBytes];
    FillRandomPalette(many, 256, 1);
    for (int i = 0; i < 2000; ++i) {
        const auto red = static_cast<int32_t>(random() & 255);
        const auto green = static_cast<int32_t>(random() & 255);
        const auto blue = static_cast<int32_t>(random() & 255);
        const auto count = static_cast<int32_t>(random() % 257);
        ASSERT_EQ(NearestEntry(many, count, red, green, blue),
                  ReferenceNearest(many, count, red, green, blue));
    }
}

TEST(PaletteOrder, Sorting_orders_by_luminance_and_keeps_equals_in_order) {
    for (int32_t colors : {0, 1, 2, 3, 17, 100, 255, 256}) {
        uint8_t expected[kPaletteBytes], actual[kPaletteBytes];
        FillRandomPalette(expected, 256, static_cast<uint32_t>(colors));
        for (int i = 0; i < 768; i += 9) expected[i] = expected[(i + 30) % 768];  // more equals
        std::memcpy(actual, expected, sizeof actual);
        ReferenceSort(expected, colors);
        SortByLuminance(actual, colors);
        EXPECT_EQ(std::memcmp(expected, actual, sizeof actual), 0) << colors;
    }
}

TEST(PaletteOrder, Bits_grow_with_each_power_of_two_and_are_24_above_256_colours) {
    const int32_t steps[][2] = {{0, 1},  {2, 1},   {3, 2},   {4, 2},   {5, 3},   {8, 3},
                                {9, 4},  {16, 4},  {17, 5},  {32, 5},  {33, 6},  {64, 6},
                                {65, 7}, {128, 7}, {129, 8}, {256, 8}, {257, 24}};
    for (const auto& step : steps) EXPECT_EQ(BitsForColors(step[0]), step[1]) << step[0];
}

}  // namespace
}  // namespace kfx::test
