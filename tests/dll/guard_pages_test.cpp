// SPDX-License-Identifier: MIT
// The real DLL with each of its blocks, and each that the host hands over, beside a page that must not be
// touched: sources opened, drawn and built with every effect through the window.
#include <gtest/gtest.h>

#include "resources/resource_ids.h"
#include "tests/dll/support/memory_ledger.h"
#include "tests/dll/support/window_test.h"
#include "tests/support/animation_blocks.h"
#include "tests/support/guarded_memory.h"
#include "tests/support/pictures.h"

namespace kfx::test {
namespace {

constexpr int kEffects = 20;

std::vector<uint8_t> ThreeFrames(const Size& size) {
    return MakeAnimationBlock({{BytesOf(RandomPicture(size.width, size.height, 1, 8).handle)},
                               {BytesOf(ShadedPicture(size.width, size.height, 2).handle)},
                               {BytesOf(RandomPicture(size.width, size.height, 3, 1).handle)}});
}

class GuardedPlugin : public testing::TestWithParam<GuardSide> {};

TEST_P(GuardedPlugin, Draws_and_builds_without_touching_a_byte_outside) {
    const size_t spoiled = CountSpoiledBytes();
    const size_t blocks = CountGuardedBlocks();
    size_t builds = 0;
    {
        const GuardedMemory guarded(GetParam());
        FakeHost host;
        SessionOptions options;
        options.configuration = "MainEffect = 0\nTruecolour = 0\nMainSupercompress = 1\n";
        options.prepareLibrary = GuardSizesOf;
        PluginSession session(host, options);
        session.Click(IDC_CUSTOM_PALETTE);
        for (const Size& size : {Size{1, 1}, {7, 3}, {33, 31}, {33, 1}, {1, 33}, {801, 57}, {57, 801}}) {
            host.Serve(ThreeFrames(size));
            session.Click(IDC_SELECT);
            for (int effect = 0; effect < kEffects; ++effect) {
                SayWhatRuns("effect " + std::to_string(effect) + " in the window on " +
                            std::to_string(size.width) + "x" + std::to_string(size.height) + ", pages " +
                            NameOf(GetParam()));
                session.Choose(IDC_EFFECT, effect);
                session.DrawPreview(120, 90);
                host.ClearTranscript();
                session.Click(IDC_TEST);
                ASSERT_EQ(host.Frames().size(), 3u) << effect;
                ++builds;
            }
            session.Click(IDC_DITHER);
        }
        session.Close();
        EXPECT_TRUE(session.Messages().empty());
        EXPECT_EQ(CountLedger().liveBlocks, 0u);
    }
    EXPECT_EQ(CountSpoiledBytes(), spoiled);
    EXPECT_GT(CountGuardedBlocks() - blocks, 10 * builds);
}

INSTANTIATE_TEST_SUITE_P(Sides, GuardedPlugin, testing::Values(GuardSide::Behind, GuardSide::Before),
                         [](const auto& side) { return std::string("Pages_") + NameOf(side.param); });

}  // namespace
}  // namespace kfx::test
