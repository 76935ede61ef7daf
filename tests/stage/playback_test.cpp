// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "stage/playback.h"
#include "tests/stage/small_films.h"

namespace kfx::test {
namespace {

using namespace stage;

struct Playing : ::testing::Test {
    FramePool pool;
    std::shared_ptr<const Film> film = SmallFilm({100, 50, 50}, {1, 2, 3}, &pool);
    Playback playback;

    // The same film, shown once and then so often again.
    std::shared_ptr<const Film> Repeated(int loops) const {
        auto copy = std::make_shared<Film>(*film);
        copy->facts.loopCount = loops;
        return copy;
    }
};

TEST_F(Playing, Frames_follow_the_clock_round_after_round) {
    Restart(&playback, 1000);
    EXPECT_FALSE(Advance(&playback, *film, 1099));
    EXPECT_TRUE(Advance(&playback, *film, 1100));
    EXPECT_EQ(playback.frame, 1u);
    EXPECT_TRUE(Advance(&playback, *film, 1200));
    EXPECT_EQ(playback.frame, 0u);
    Advance(&playback, *film, 1200 + 7 * 200 + 160);
    EXPECT_EQ(playback.frame, 2u);
}

TEST_F(Playing, The_speeds_stretch_the_time_without_losing_any) {
    for (int speed = 0; speed < SpeedCount(); ++speed) {
        Playback one = {};
        one.speed = speed;
        Restart(&one, 0);
        const uint64_t wait = UntilNextFrame(one, *film);
        // In many small steps, whose parts add up.
        for (uint64_t now = 1; now < wait; ++now) EXPECT_FALSE(Advance(&one, *film, now)) << speed;
        EXPECT_TRUE(Advance(&one, *film, wait)) << speed;
    }
}

TEST_F(Playing, A_file_that_plays_once_stops_at_its_last_frame_and_starts_again_from_the_first) {
    const auto once = Repeated(kLoopNone);
    Restart(&playback, 0);
    EXPECT_TRUE(Advance(&playback, *once, 500));
    EXPECT_FALSE(playback.playing);
    EXPECT_EQ(playback.frame, 2u);
    SetPlaying(&playback, *once, true, 600);
    EXPECT_EQ(playback.frame, 0u);
    EXPECT_EQ(playback.position, 0u);
}

TEST_F(Playing, A_file_with_a_count_is_repeated_so_often) {
    const auto twiceMore = Repeated(2);
    Restart(&playback, 0);
    Advance(&playback, *twiceMore, 599);
    EXPECT_TRUE(playback.playing);
    Advance(&playback, *twiceMore, 600);
    EXPECT_FALSE(playback.playing);
}

TEST_F(Playing, For_ever_is_for_ever_whatever_the_file_says) {
    const auto once = Repeated(kLoopNone);
    playback.forever = true;
    Restart(&playback, 0);
    Advance(&playback, *once, 100000);
    EXPECT_TRUE(playback.playing);
}

TEST_F(Playing, Showing_a_frame_stops_at_its_beginning) {
    Restart(&playback, 0);
    ShowFrame(&playback, *film, 2);
    EXPECT_FALSE(playback.playing);
    EXPECT_EQ(playback.position, 150u);
    EXPECT_FALSE(Advance(&playback, *film, 100000));
    EXPECT_EQ(playback.frame, 2u);
    ShowFrame(&playback, *film, 99);
    EXPECT_EQ(playback.frame, 2u) << "there is no later one";
}

TEST_F(Playing, The_text_counts_frames_from_one) {
    ShowFrame(&playback, *film, 1);
    EXPECT_EQ(PositionText(playback, *film), "Frame 2 of 3    0.10 of 0.20 s");
}

}  // namespace
}  // namespace kfx::test
