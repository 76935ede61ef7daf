// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "tests/stage/small_films.h"

namespace kfx::test {
namespace {

using namespace stage;

TEST(Film, Equal_frames_share_their_memory_within_and_between_films) {
    FramePool pool;
    const auto first = SmallFilm({100, 100, 100}, {1, 2, 1}, &pool);
    const auto second = SmallFilm({50, 50}, {2, 3}, &pool);
    EXPECT_EQ(first->frames[0].pixels, first->frames[2].pixels);
    EXPECT_EQ(first->frames[1].pixels, second->frames[0].pixels);
    EXPECT_NE(first->frames[0].pixels, first->frames[1].pixels);
    EXPECT_EQ(BytesOf({first.get(), second.get()}), 3 * 8u) << "three different frames of eight bytes";
}

TEST(Film, A_frame_that_nobody_has_any_more_is_not_shared) {
    FramePool pool;
    SmallFilm({100}, {1}, &pool);
    const auto later = SmallFilm({100}, {1}, &pool);
    EXPECT_EQ(later->frames[0].pixels.use_count(), 1);
}

TEST(Film, The_pool_forgets_frames_that_nobody_has_any_more) {
    FramePool pool;
    SmallFilm({100, 100}, {1, 2}, &pool);
    const auto later = SmallFilm({100}, {3}, &pool);
    EXPECT_EQ(pool.known.size(), 1u);
}

TEST(Film, A_copy_as_an_animation_has_all_that_the_film_was_made_of) {
    FramePool pool;
    const auto film = SmallFilm({100, 30}, {7, 9}, &pool);
    const Animation animation = AnimationOf(*film);
    ASSERT_EQ(animation.frames.size(), 2u);
    EXPECT_EQ(animation.width, 2);
    EXPECT_EQ(animation.frames[1].pixels, std::vector<uint8_t>(8, 9));
    EXPECT_EQ(MillisecondsOf(animation.frames[1]), 30);
    EXPECT_EQ(animation.loopCount, kLoopForever);
}

TEST(Film, Very_short_times_are_a_tenth_of_a_second) {
    FramePool pool;
    const auto film = SmallFilm({0, 10, 20}, {1, 2, 3}, &pool);
    EXPECT_EQ(film->ends, (std::vector<uint64_t>{100, 200, 220}));
    EXPECT_EQ(LengthOf(*film), 220u);
}

TEST(Film, The_frame_of_a_moment_begins_where_the_one_before_ends) {
    FramePool pool;
    const auto film = SmallFilm({100, 50, 50}, {1, 2, 3}, &pool);
    EXPECT_EQ(FrameAt(*film, 0), 0u);
    EXPECT_EQ(FrameAt(*film, 99), 0u);
    EXPECT_EQ(FrameAt(*film, 100), 1u);
    EXPECT_EQ(FrameAt(*film, 150), 2u);
    EXPECT_EQ(FrameAt(*film, 5000), 2u);
    EXPECT_EQ(StartOf(*film, 2), 150u);
}

}  // namespace
}  // namespace kfx::test
