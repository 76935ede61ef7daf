// SPDX-License-Identifier: MIT
#include "bench/growth.h"

#include <gtest/gtest.h>

namespace kfx::bench {
namespace {

constexpr Patience kOneRun = {.milliseconds = 0, .runs = 1};

void ExpectFigures(const GrowthTable& table, size_t rows) {
    EXPECT_EQ(table.rows.size(), rows);
    for (const GrowthRow& row : table.rows) {
        ASSERT_EQ(row.values.size(), table.columns.size()) << row.name;
        for (size_t i = 0; i < row.values.size(); ++i)
            EXPECT_GT(row.values[i], 0) << row.name << ", " << table.columns[i];
    }
}

TEST(BenchGrowth, Every_cell_has_a_figure) {
    ExpectFigures(GrowthOfSides({16, 70}, kOneRun), 2);
    ExpectFigures(GrowthOfFrames({2, 3}, kOneRun), 2);
    ExpectFigures(GrowthOfColors({2, 300}, 32, kOneRun), 4);
}

TEST(BenchGrowth, A_step_that_needs_two_frames_has_no_figure_for_one) {
    const GrowthTable table = GrowthOfFrames({1}, kOneRun);
    ASSERT_EQ(table.columns.at(2), "supercompression");
    EXPECT_EQ(table.rows.at(0).values.at(2), 0);
}

TEST(BenchGrowth, The_table_ends_with_the_greatest_step_from_the_first_counted_row) {
    const GrowthTable table = {.what = "sides",
                               .columns = {"a", "b"},
                               .rows = {{"1", {0.5, 3}}, {"2", {5, 2}}, {"3", {10, 0}}, {"4", {12.25, 1}}}};
    EXPECT_EQ(MarkdownOf(table, 1),
              "| sides | a | b |\n"
              "| ---: | ---: | ---: |\n"
              "| 1 | 0.50 | 3.00 |\n"
              "| 2 | 5.00 | 2.00 |\n"
              "| 3 | 10.0 | – |\n"
              "| 4 | 12.2 | 1.00 |\n"
              "| greatest step | 2.00 | – |\n");
}

}  // namespace
}  // namespace kfx::bench
