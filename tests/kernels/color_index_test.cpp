// SPDX-License-Identifier: MIT
#include "kernels/color_index.h"

#include <gtest/gtest.h>

#include <random>
#include <thread>
#include <vector>

#include "builder/palette_order.h"
#include "framework/cpu.h"
#include "kernels/remap_row.h"

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

// Cells without an entry, with one, with the same one twice and with many, whose colours a picture mixes.
TEST_P(ColorIndexPaths, Every_colour_of_every_kind_of_cell_is_answered_by_the_fast_rule) {
    std::mt19937 random(5);
    Palette palette = RandomPalette(42);
    for (int i = 3 * 128; i < 3 * 200; ++i) palette.bytes[i] = static_cast<uint8_t>(96 + random() % 24);
    for (int i = 3 * 200; i < 3 * 220; ++i) palette.bytes[i] = palette.bytes[i - 3 * 100];
    std::vector<uint8_t> row;
    std::vector<int32_t> expected;
    const auto add = [&](int32_t red, int32_t green, int32_t blue) {
        for (const int32_t level : {blue, green, red}) row.push_back(static_cast<uint8_t>(level));
        expected.push_back(AnswerByRule(palette, 256, true, red, green, blue));
    };
    for (int i = 0; i < 256; i += 5) {
        const uint8_t* entry = palette.bytes + 3 * i;
        for (int k = 0; k < 512; ++k) {
            add((entry[0] & 0xF8) + (k >> 6), (entry[1] & 0xF8) + (k >> 3 & 7), (entry[2] & 0xF8) + (k & 7));
            if (k % 9 == 0) add(entry[0], entry[1], entry[2]);
            if (k % 5 == 0) add(static_cast<int32_t>(random() & 255), 7 * i & 255, k & 255);
        }
    }
    const auto width = static_cast<int32_t>(expected.size());
    ColorIndex index;
    ASSERT_TRUE(PrepareColorIndex(&index, palette.bytes, 256, true));
    std::vector<uint8_t> numbers(expected.size() + 1, 0xEE);
    for (int round = 0; round < 2; ++round) {  // the second finds all cells known
        RemapRow(row.data(), width, &index, numbers.data());
        for (size_t i = 0; i < expected.size(); ++i) ASSERT_EQ(numbers[i], expected[i]) << i;
        ASSERT_EQ(numbers[expected.size()], 0xEE) << "written past the row";
    }
}

// They find and write the same cells at the same time.
TEST_P(ColorIndexPaths, Threads_that_ask_one_fast_index_get_the_answers_of_their_own) {
    constexpr int32_t kWidth = 20000;
    std::mt19937 random(8);
    for (int round = 0; round < 6; ++round) {
        const Palette palette = RandomPalette(static_cast<uint32_t>(70 + round));
        std::vector<uint8_t> row(3 * kWidth);
        for (uint8_t& level : row) level = static_cast<uint8_t>(random() % (round % 2 ? 256 : 40));
        ColorIndex shared, own;
        ASSERT_TRUE(PrepareColorIndex(&shared, palette.bytes, 256, true));
        ASSERT_TRUE(PrepareColorIndex(&own, palette.bytes, 256, true));
        std::vector<uint8_t> expected(kWidth);
        RemapRow(row.data(), kWidth, &own, expected.data());
        std::vector<std::vector<uint8_t>> numbers(3, std::vector<uint8_t>(kWidth));
        std::vector<std::thread> threads;
        for (std::vector<uint8_t>& each : numbers)
            threads.emplace_back([&] { RemapRow(row.data(), kWidth, &shared, each.data()); });
        for (std::thread& thread : threads) thread.join();
        for (const std::vector<uint8_t>& each : numbers) ASSERT_EQ(each, expected);
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

TEST(ColorIndex, Every_colour_has_a_cell_and_a_place_in_it_of_its_own) {
    std::vector<bool> taken(size_t{1} << 24);
    for (uint32_t color = 0; color < 1u << 24; ++color) {
        ASSERT_LT(CellOf(color), kRoundedColors);
        ASSERT_LT(PlaceInCell(color), kCellColors);
        ASSERT_EQ(CellOf(color), CellOf(color & 0xF8F8F8));
        const uint32_t both = CellOf(color) * kCellColors + PlaceInCell(color);
        ASSERT_FALSE(taken[both]);
        taken[both] = true;
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
    answer(first, 20, true);
    answer(first, 256, true);
    answer(first, 256, false);
}

}  // namespace
}  // namespace kfx::test
