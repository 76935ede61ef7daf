// SPDX-License-Identifier: MIT
#include "kernels/color_index.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "builder/palette_order.h"
#include "framework/cpu.h"

namespace kfx::test {
namespace {

struct Palette {
    uint8_t bytes[3 * 256];
};

// Entries that repeat and lie side by side stand beside entries of their own.
Palette RandomPalette(uint32_t seed) {
    std::mt19937 random(seed);
    Palette palette;
    for (int i = 0; i < 3 * 256; ++i) {
        const bool nearby = i >= 30 && i / 3 % 4 == 0;
        palette.bytes[i] = nearby ? static_cast<uint8_t>(palette.bytes[i - 15] + random() % 2)
                                  : static_cast<uint8_t>(random());
    }
    return palette;
}

// The rule, entry by entry: an exact match first; when fast, else the entry nearest to the colour's rounding
// to 15 bits.
int32_t AnswerByRule(const Palette& palette, int32_t count, bool fast, int32_t red, int32_t green,
                     int32_t blue) {
    const int32_t nearest = NearestEntry(palette.bytes, count, red, green, blue);
    if (!fast || ColorDistance(palette.bytes + 3 * nearest, red, green, blue) == 0) return nearest;
    return NearestEntry(palette.bytes, count, red & 0xF8, green & 0xF8, blue & 0xF8);
}

class ColorIndexPaths : public ::testing::TestWithParam<bool> {
protected:
    void SetUp() override { AllowAvx2(GetParam()); }
    void TearDown() override { AllowAvx2(true); }
};

TEST_P(ColorIndexPaths, Every_answer_is_the_one_of_the_rule) {
    std::mt19937 random(7);
    uint32_t seed = 1;
    for (const int32_t count : {1, 2, 3, 16, 63, 64, 65, 200, 256}) {
        for (const bool fast : {false, true}) {
            const Palette palette = RandomPalette(seed++);
            ColorIndex index;
            ASSERT_TRUE(PrepareColorIndex(&index, palette.bytes, count, fast));
            for (int i = 0; i < 3000; ++i) {
                const auto color = static_cast<uint32_t>(random());
                const uint32_t red = color & 255, green = color >> 8 & 255, blue = color >> 16 & 255;
                ASSERT_EQ(LookUpColor(&index, red, green, blue),
                          AnswerByRule(palette, count, fast, static_cast<int32_t>(red),
                                       static_cast<int32_t>(green), static_cast<int32_t>(blue)))
                    << count << (fast ? " fast, " : ", ") << red << " " << green << " " << blue;
            }
        }
    }
}

TEST_P(ColorIndexPaths, A_whole_block_of_colours_is_answered_by_the_rule) {
    const Palette palette = RandomPalette(99);
    ColorIndex index;
    ASSERT_TRUE(PrepareColorIndex(&index, palette.bytes, 256, false));
    for (uint32_t i = 0; i < 4096; ++i) {
        const uint32_t red = 64 + (i & 15), green = 128 + (i >> 4 & 15), blue = 240 + (i >> 8);
        ASSERT_EQ(LookUpColor(&index, red, green, blue),
                  NearestEntry(palette.bytes, 256, static_cast<int32_t>(red), static_cast<int32_t>(green),
                               static_cast<int32_t>(blue)));
    }
}

INSTANTIATE_TEST_SUITE_P(Avx2AndPlain, ColorIndexPaths, ::testing::Bool());

TEST(ColorIndex, An_empty_palette_answers_its_first_entry) {
    const Palette palette = RandomPalette(3);
    ColorIndex index;
    ASSERT_TRUE(PrepareColorIndex(&index, palette.bytes, 0, false));
    EXPECT_EQ(LookUpColor(&index, 0, 0, 0), 0);
    EXPECT_EQ(LookUpColor(&index, 255, 255, 255), 0);
}

TEST(ColorIndex, Every_colour_has_a_place_of_its_own) {
    std::vector<bool> taken(size_t{1} << 24);
    for (uint32_t color = 0; color < 1u << 24; ++color) {
        const uint32_t place = PlaceOf(color >> 16, color >> 8 & 255, color & 255);
        ASSERT_LT(place, 1u << 24);
        ASSERT_FALSE(taken[place]);
        taken[place] = true;
    }
}

TEST(ColorIndex, Another_palette_another_count_and_another_rule_are_noticed) {
    const Palette first = RandomPalette(11), second = RandomPalette(12);
    ColorIndex index;
    const auto answer = [&index](const Palette& palette, int32_t count, bool fast) {
        EXPECT_TRUE(PrepareColorIndex(&index, palette.bytes, count, fast));
        for (uint32_t i = 0; i < 500; ++i) {
            const uint32_t red = i * 37 & 255, green = i * 101 & 255, blue = i * 13 & 255;
            ASSERT_EQ(LookUpColor(&index, red, green, blue),
                      AnswerByRule(palette, count, fast, static_cast<int32_t>(red),
                                   static_cast<int32_t>(green), static_cast<int32_t>(blue)));
        }
    };
    answer(first, 256, false);
    answer(second, 256, false);
    answer(second, 20, false);
    answer(second, 20, true);
    answer(first, 256, false);
}

}  // namespace
}  // namespace kfx::test
