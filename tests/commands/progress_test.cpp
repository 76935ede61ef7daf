// SPDX-License-Identifier: MIT
#include "commands/progress.h"

#include <gtest/gtest.h>

namespace kfx::commands {
namespace {

TEST(Progress, The_stage_and_its_part_are_told) {
    EXPECT_EQ(TextOf({.stage = "Building", .current = 2, .total = 12}), "Building  3 of 12");
    EXPECT_EQ(TextOf({.stage = "Writing", .current = 0, .total = 0}), "Writing");
    EXPECT_EQ(TextOf({}), "");
}

TEST(Progress, The_time_left_follows_from_what_is_done) {
    EXPECT_EQ(TimeLeftText(10, 10, 20), "about 10 s left");
    EXPECT_EQ(TimeLeftText(10, 10, 21), "about 15 s left");
    EXPECT_EQ(TimeLeftText(60, 10, 40), "about 3 min left");
    EXPECT_EQ(TimeLeftText(3600, 1, 6), "about 5 h left");
}

TEST(Progress, No_time_is_told_before_there_is_anything_to_conclude_from) {
    EXPECT_EQ(TimeLeftText(100, 0, 20), "");
    EXPECT_EQ(TimeLeftText(2.9, 10, 20), "");
    EXPECT_EQ(TimeLeftText(100, 20, 20), "");
}

TEST(Progress, A_long_line_gives_way_in_its_middle) {
    EXPECT_EQ(FitColumns("0123456789", 10), "0123456789");
    EXPECT_EQ(FitColumns("0123456789", 9), "012...789");
    EXPECT_EQ(FitColumns("0123456789", 2), "01");
    EXPECT_EQ(FitColumns("\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9", 5), "\xC3\xA9...\xC3\xA9");
}

}  // namespace
}  // namespace kfx::commands
