// SPDX-License-Identifier: MIT
// Memory that is refused to the threads of a wall leaves tiles with a sentence, and a wall that works.
#include <gtest/gtest.h>

#include <string>

#include "framework/movable_memory_native.h"
#include "stage/wall_render.h"
#include "tests/stage/refused_new.h"
#include "tests/stage/wall_test_source.h"
#include "tests/support/wait_for.h"

namespace kfx::stage {
namespace {

using test::newRefusals;
using test::RefuseNewOfOtherThreads;
using test::WaitFor;
using test::WallTestSource;

constexpr int kSide = 24;

struct RefusedWall : ::testing::Test {
    const std::vector<EffectDescription> effects = DescribeEffects();
    WallRender* render = nullptr;

    void SetUp() override {
        RefuseNewOfOtherThreads(0);
        WallSetup setup;
        setup.effects = &effects;
        render = OpenWallRender(setup);
        ASSERT_TRUE(render);
    }
    void TearDown() override {
        CloseWallRender(render);
        RefuseNewOfOtherThreads(0);
        ResetMemoryCounts();
        EXPECT_EQ(CountMemory().liveBlocks, 0u);
        EXPECT_EQ(CountMemory().lockedBlocks, 0u);
    }

    bool Show(bool holes) {
        std::vector<EffectSettings> tiles;
        for (size_t i = 0; i < effects.size(); ++i) tiles.push_back(DefaultSettings(effects, i));
        return ShowInWall(render, WallSourceOf(WallTestSource(2, kSide + 6, kSide, holes)), kSide, kSide,
                          tiles, TileRanks(tiles.size(), 0, 19, SIZE_MAX)) &&
               WaitFor([&] { return ReadWallProgress(render).tilesDone == effects.size(); });
    }

    // Every tile has a picture or a sentence. Returns how many failed.
    size_t CountFailed() {
        size_t failed = 0;
        for (size_t i = 0; i < effects.size(); ++i) {
            const TileView view = ReadTile(render, i);
            EXPECT_EQ(view.state == TileState::Failed, !view.picture) << effects[i].name;
            if (view.state != TileState::Failed) continue;
            ++failed;
            EXPECT_EQ(std::string(view.error).substr(0, 26), "There is not enough memory");
        }
        return failed;
    }
};

TEST_F(RefusedWall, Each_refused_allocation_leaves_a_sentence_and_the_next_wall_is_whole) {
    size_t failed = 0;
    long number = 1;
    for (;; ++number) {
        RefuseNewOfOtherThreads(number);
        ASSERT_TRUE(Show(number % 2 == 0));
        const long refused = newRefusals;
        RefuseNewOfOtherThreads(0);
        if (refused == 0) break;
        failed += CountFailed();
        if (number % 20 != 0) continue;
        ASSERT_TRUE(Show(false));
        EXPECT_EQ(CountFailed(), 0u);
    }
    EXPECT_GT(number, 200);
    EXPECT_GT(failed, 200u);
}

TEST_F(RefusedWall, Each_refused_block_of_an_effect_leaves_a_picture_or_a_sentence) {
    size_t failed = 0;
    ResetMemoryCounts();
    ASSERT_TRUE(Show(false));
    const size_t blocks = CountMemory().allocations;
    EXPECT_GT(blocks, 100u);
    for (size_t number = 1; number <= blocks; number += 3) {
        ResetMemoryCounts();
        RefuseAllocation(number);
        ASSERT_TRUE(Show(false));
        failed += CountFailed();
    }
    EXPECT_GT(failed, 10u);
    ResetMemoryCounts();
    RefuseAllocationsFrom(1);
    ASSERT_TRUE(Show(true));
    EXPECT_EQ(CountFailed(), effects.size());
}

}  // namespace
}  // namespace kfx::stage
