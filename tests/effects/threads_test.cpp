// SPDX-License-Identifier: MIT
// A program may transform frames on several threads: every effect gives the same pictures there as on one.
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "effects/effect_table.h"
#include "framework/panel.h"
#include "tests/support/effect_checks.h"
#include "tests/support/held_clock.h"

namespace kfx::test {
namespace {

constexpr size_t kThreads = 4;
constexpr size_t kFrames = 3;

// Every effect on the same frame, several times over with one cache.
void RunEffects(ImageHandle source, const std::vector<Values>& values, std::vector<Picture>* results) {
    for (size_t row = 0; row < EffectCount(); ++row) {
        KernelCache cache;
        for (size_t frame = 0; frame < kFrames; ++frame)
            results->emplace_back(
                EffectAt(row)->apply(source, MakeInput(values[row], kTestBackground, &cache)));
    }
}

TEST(Threads, Run_effects_at_the_same_time_with_the_same_pictures) {
    const HeldClock clock(12345);  // Water Drops takes its seed from it
    const Picture source = RandomPicture(61, 47, 1);
    std::vector<Values> values(EffectCount());
    for (size_t row = 0; row < EffectCount(); ++row)
        for (size_t c = 0; c < EffectAt(row)->controls.count; ++c)
            values[row].push_back(ReadControl(EffectAt(row)->controls.rows[c], nullptr));
    // The threads run first, so that they are the ones who find out what the processor can.
    std::vector<Picture> results[kThreads], expected;
    {
        std::vector<std::jthread> threads;
        for (std::vector<Picture>& list : results)
            threads.emplace_back([&] { RunEffects(source.handle, values, &list); });
    }
    RunEffects(source.handle, values, &expected);
    for (const std::vector<Picture>& list : results) {
        ASSERT_EQ(list.size(), expected.size());
        for (size_t i = 0; i < list.size(); ++i)
            EXPECT_TRUE(SamePicture(expected[i].handle, list[i].handle)) << EffectAt(i / kFrames)->name;
    }
}

}  // namespace
}  // namespace kfx::test
