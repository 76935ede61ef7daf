// SPDX-License-Identifier: MIT
#include "kernels/diamond_mode.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "framework/cpu.h"

namespace kfx::test {
namespace {

using Bytes = std::vector<uint8_t>;
using LevelAt = uint8_t (*)(int32_t x, int32_t y, std::mt19937* random);

uint8_t AnyLevel(int32_t, int32_t, std::mt19937* random) { return static_cast<uint8_t>((*random)()); }
uint8_t FewLevels(int32_t, int32_t, std::mt19937* random) {
    return static_cast<uint8_t>((*random)() % 3 * 100);
}
// Levels 32 apart stand in the same place of two parts of the census.
uint8_t LevelsThirtyTwoApart(int32_t, int32_t, std::mt19937* random) {
    return static_cast<uint8_t>((*random)() % 5 * 32 + 7);
}
// More than 127 pixels of the larger diamonds have the same, dark level.
uint8_t MostlyDark(int32_t, int32_t, std::mt19937* random) { return (*random)() % 10 ? 20 : 200; }
uint8_t OneLevel(int32_t, int32_t, std::mt19937*) { return 255; }
uint8_t FallingStripes(int32_t x, int32_t y, std::mt19937*) { return static_cast<uint8_t>((x + y) / 3 * 37); }
uint8_t RisingStripes(int32_t x, int32_t y, std::mt19937*) { return static_cast<uint8_t>((x - y) / 2 * 29); }

// The painted pixels with their surroundings: `reach` pixels on each side, one more row and two more columns
// behind.
struct Plane {
    int32_t reach, columns, rows;
    int32_t width, height;
    Bytes levels;  // 32 bytes more in each row, of any value
    Bytes colors;  // all different from their neighbours
};

Plane MakePlane(int32_t reach, int32_t columns, int32_t rows, LevelAt levelAt) {
    Plane plane = {.reach = reach,
                   .columns = columns,
                   .rows = rows,
                   .width = columns + 2 * reach + 1,
                   .height = rows + 2 * reach + 1,
                   .levels = {},
                   .colors = {}};
    std::mt19937 random(1);
    for (int32_t y = 0; y < plane.height; ++y) {
        for (int32_t x = 0; x < plane.width; ++x) plane.levels.push_back(levelAt(x, y, &random));
        for (int32_t k = 0; k < 32; ++k) plane.levels.push_back(static_cast<uint8_t>(random()));
    }
    plane.colors.resize(3 * static_cast<size_t>(plane.width) * static_cast<size_t>(plane.height));
    for (uint8_t& value : plane.colors) value = static_cast<uint8_t>(random());
    return plane;
}

Bytes Paint(const Plane& plane) {
    const size_t reach = static_cast<size_t>(plane.reach), width = static_cast<size_t>(plane.width);
    const size_t toStride = 3 * static_cast<size_t>(plane.columns);
    Bytes to(toStride * static_cast<size_t>(plane.rows));
    std::vector<DiamondSpan> spans(SpanCount(plane.reach));
    std::vector<uint16_t> counters(CounterCount(plane.reach));
    PaintModes(plane.reach,
               {.rows = plane.rows,
                .columns = plane.columns,
                .levels = plane.levels.data() + reach * (width + 32) + reach,
                .levelStride = width + 32,
                .from = plane.colors.data() + 3 * (reach * width + reach),
                .fromStride = 3 * width,
                .to = to.data(),
                .toStride = toStride},
               {spans.data(), counters.data()});
    return to;
}

// Counts the pixels one after the other as they are visited, and notes each that brings its level to a new
// greatest count.
struct Vote {
    const Plane& plane;
    int32_t counts[256] = {};
    int32_t best = 0;
    size_t winner = 0;  // pixel

    void VisitRow(int32_t x, int32_t y, int32_t first, int32_t last) {
        for (int32_t dx = first; dx <= last; ++dx) {
            const auto row = static_cast<size_t>(y), column = static_cast<size_t>(x + dx);
            const auto width = static_cast<size_t>(plane.width);
            const int32_t count = ++counts[plane.levels[row * (width + 32) + column]];
            if (count <= best) continue;
            best = count;
            winner = row * width + column;
        }
    }
};

Bytes PaintOneByOne(const Plane& plane) {
    const int32_t n = plane.reach;
    Bytes to;
    for (int32_t y = n; y < n + plane.rows; ++y)
        for (int32_t x = n; x < n + plane.columns; ++x) {
            Vote vote = {plane};
            for (int32_t k = 0; k < n; ++k) {
                vote.VisitRow(x, y - (n - k), 1 - k, 1 + k);
                vote.VisitRow(x, y + (n - k), 1 - k, 1 + k);
            }
            vote.VisitRow(x, y, -n, n);
            to.insert(to.end(), &plane.colors[3 * vote.winner], &plane.colors[3 * vote.winner] + 3);
        }
    return to;
}

class DiamondModes : public testing::TestWithParam<bool> {
protected:
    DiamondModes() { AllowAvx2(GetParam()); }
    ~DiamondModes() override { AllowAvx2(true); }
};

INSTANTIATE_TEST_SUITE_P(WithAvx2, DiamondModes, testing::Values(true));
INSTANTIATE_TEST_SUITE_P(Plain, DiamondModes, testing::Values(false));

// The greatest reach is too large for counts of a byte. Columns are painted 48 at a time.
TEST_P(DiamondModes, Are_those_of_pixels_counted_one_by_one) {
    for (const LevelAt levelAt :
         {AnyLevel, FewLevels, LevelsThirtyTwoApart, MostlyDark, OneLevel, FallingStripes, RisingStripes})
        for (int32_t reach = 1; reach <= 11; ++reach)
            for (const int32_t columns : {1, 2, 5, 47, 48, 49, 96, 97}) {
                const Plane plane = MakePlane(reach, columns, 1 + (reach + columns) % 7, levelAt);
                EXPECT_EQ(Paint(plane), PaintOneByOne(plane)) << reach << ", " << columns;
            }
}

TEST_P(DiamondModes, Are_right_far_down_a_tile) {
    for (const int32_t reach : {3, 7, 10}) {
        const Plane plane = MakePlane(reach, 50, 130, FewLevels);
        EXPECT_EQ(Paint(plane), PaintOneByOne(plane)) << reach;
    }
}

TEST_P(DiamondModes, Of_no_pixels_are_none) {
    EXPECT_TRUE(Paint(MakePlane(7, 0, 3, AnyLevel)).empty());
    EXPECT_TRUE(Paint(MakePlane(7, 3, 0, AnyLevel)).empty());
}

}  // namespace
}  // namespace kfx::test
