// SPDX-License-Identifier: MIT
#include "framework/random.h"

#include <gtest/gtest.h>

#include <ctime>

#include "tests/support/held_clock.h"

namespace kfx::test {
namespace {

TEST(Random, The_sequence_of_seed_one_is_the_windows_runtimes) {
    RandomSequence sequence = SeedRandom(1);
    uint16_t numbers[5];
    NextRandoms(&sequence, numbers, 5);
    const uint16_t expected[] = {41, 18467, 6334, 26500, 19169};
    for (int i = 0; i < 5; ++i) EXPECT_EQ(numbers[i], expected[i]);
}

#ifdef _WIN32
TEST(Random, The_computed_sequence_is_the_runtimes_own) {
    for (const uint32_t seed : {0u, 1u, 77u, 0x80000000u, 0xFFFFFFFFu}) {
        uint16_t computed[1000], called[1000];
        RandomSequence sequence = SeedRandom(seed);
        ASSERT_TRUE(sequence.computed);
        NextRandoms(&sequence, computed, 1000);
        sequence = SeedRandom(seed);
        sequence.computed = false;
        NextRandoms(&sequence, called, 1000);
        for (int i = 0; i < 1000; ++i) ASSERT_EQ(computed[i], called[i]) << seed << ", " << i;
    }
}
#endif

TEST(Random, Any_lengths_asked_for_give_one_sequence) {
    for (const uint32_t seed : {0u, 1u, 77u, 0x80000000u, 0xFFFFFFFFu}) {
        RandomSequence whole = SeedRandom(seed);
        uint16_t numbers[400];
        NextRandoms(&whole, numbers, 400);
        RandomSequence pieces = SeedRandom(seed);
        size_t at = 0;
        for (size_t length = 0; at + length <= 400; at += length++) {
            uint16_t piece[64];
            NextRandoms(&pieces, piece, length);
            for (size_t i = 0; i < length; ++i)
                ASSERT_EQ(piece[i], numbers[at + i]) << seed << ", " << at + i;
        }
    }
}

TEST(Random, The_clock_tells_the_time_unless_it_is_held) {
    const auto before = static_cast<uint32_t>(std::time(nullptr));
    const uint32_t now = ClockSeconds();
    EXPECT_LE(now - before, 60u);
    const HeldClock clock(42);
    EXPECT_EQ(ClockSeconds(), 42u);
}

TEST(Random, Who_holds_the_clock_learns_what_held_it_before) {
    EXPECT_EQ(HoldClock(42), kClockRuns);
    EXPECT_EQ(HoldClock(4294967295), 42);
    EXPECT_EQ(ClockSeconds(), 4294967295u);
    EXPECT_EQ(HoldClock(kClockRuns), 4294967295);
    EXPECT_GT(ClockSeconds(), 42u);
}

}  // namespace
}  // namespace kfx::test
