// SPDX-License-Identifier: MIT
#include "stage/wall_source.h"

#include <gtest/gtest.h>

#include "commands/resize_frame.h"
#include "tests/stage/wall_test_source.h"

namespace kfx::stage {
namespace {

using test::WallTestSource;

constexpr uint64_t kPlenty = uint64_t{1} << 30;

TEST(WallSource, Large_frames_are_scaled_to_fit_and_small_ones_keep_their_size) {
    const ThumbnailPlan large =
        PlanThumbnails(*WallSourceOf(WallTestSource(1, 400, 100)), 160, 120, 21, kPlenty);
    EXPECT_EQ(large.width, 160);
    EXPECT_EQ(large.height, 40);
    const ThumbnailPlan small =
        PlanThumbnails(*WallSourceOf(WallTestSource(1, 30, 20)), 160, 120, 21, kPlenty);
    EXPECT_EQ(small.width, 30);
    EXPECT_EQ(small.height, 20);
}

TEST(WallSource, Scaled_frames_are_those_of_the_commands) {
    for (const bool holes : {false, true}) {
        const auto source = WallTestSource(2, 200, 150, holes);
        const ThumbnailPlan plan = PlanThumbnails(*WallSourceOf(source), 80, 80, 21, kPlenty);
        Frame made, expected = source->frames[1];
        ASSERT_TRUE(MakeThumbnail(*WallSourceOf(source), plan, 1, &made));
        ASSERT_TRUE(commands::ResizeFrame(200, 150, 80, 60, &expected));
        EXPECT_TRUE(made.pixels == expected.pixels);
        EXPECT_EQ(made.transparent, holes);
    }
}

TEST(WallSource, Long_animations_give_every_second_frame_with_the_times_of_both) {
    const auto source = WallTestSource(5, 20, 10);
    // Three frames of 800 bytes, three times.
    const ThumbnailPlan plan = PlanThumbnails(*WallSourceOf(source), 20, 10, 3, 3 * 3 * 800);
    EXPECT_EQ(plan.step, 2u);
    ASSERT_EQ(plan.count, 3u);
    const int times[] = {300, 700, 500};
    for (size_t i = 0; i < 3; ++i) {
        Frame frame;
        ASSERT_TRUE(MakeThumbnail(*WallSourceOf(source), plan, i, &frame));
        EXPECT_EQ(frame.milliseconds, times[i]);
        EXPECT_TRUE(frame.pixels == source->frames[2 * i].pixels);
    }
    EXPECT_EQ(PlanThumbnails(*WallSourceOf(source), 20, 10, 3, 5 * 3 * 800).step, 1u);
    EXPECT_EQ(PlanThumbnails(*WallSourceOf(source), 20, 10, 3, 5 * 3 * 800 - 1).step, 2u);
}

TEST(WallSource, One_frame_is_taken_however_little_memory_there_may_be) {
    const auto source = WallTestSource(7, 20, 10);
    const ThumbnailPlan plan = PlanThumbnails(*WallSourceOf(source), 20, 10, 21, 1);
    EXPECT_EQ(plan.step, 7u);
    EXPECT_EQ(plan.count, 1u);
    EXPECT_EQ(PlanThumbnails(WallSource(), 20, 10, 21, kPlenty).count, 0u);
}

TEST(WallSource, The_frame_of_a_time_is_the_one_that_viewers_show) {
    Animation animation = *WallTestSource(3, 4, 4);  // 100, 200 and 300 ms
    animation.frames[1].delay = 1;                   // viewers make 100 ms of it
    EXPECT_EQ(PlayingTime(animation), 500u);
    EXPECT_EQ(FrameAtTime(animation, 0), 0u);
    EXPECT_EQ(FrameAtTime(animation, 99), 0u);
    EXPECT_EQ(FrameAtTime(animation, 100), 1u);
    EXPECT_EQ(FrameAtTime(animation, 199), 1u);
    EXPECT_EQ(FrameAtTime(animation, 499), 2u);
    EXPECT_EQ(FrameAtTime(animation, 500), 0u);
    EXPECT_EQ(FrameAtTime(Animation(), 7), 0u);
}

}  // namespace
}  // namespace kfx::stage
