// SPDX-License-Identifier: MIT
// Blocks with one thing wrong go through the check, the preview, every effect and whole builds: they are
// refused or built, without a step outside and within a known multiple of their size.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "effects/effect_table.h"
#include "framework/movable_memory_native.h"
#include "framework/settings.h"
#include "framework/source_animation.h"
#include "host/animation_block.h"
#include "tests/builder/refusal_inputs.h"
#include "tests/support/animation_blocks.h"
#include "tests/support/held_clock.h"
#include "tests/support/hostile_blocks.h"
#include "tests/support/pictures.h"
#include "tests/support/tried.h"

namespace kfx::test {
namespace {

// A pixel of 1 bit becomes one of 24. Beside that there is a frame's own copy, an entry for each frame, and
// what small tables take.
constexpr size_t kMostTimes = 26;
constexpr size_t kTables = 8192;

// Of whole builds: a converted picture and a working copy of each frame at most, and the tables for colours.
constexpr size_t kMostTimesBuilt = 80;
constexpr size_t kBuildTables = size_t{24} << 20;

uint64_t Accept(uint64_t, uint32_t, uint64_t, uint64_t) { return 1; }

size_t messages;
void CountMessage(void*, BuildMessage) { ++messages; }

// Decodes the block in both ways. Answers what all frames came to.
DecodeResult Decode(MemoryHandle source) {
    FreeMemory(FetchFirstFrame(source));
    uint32_t color;
    ReadBackgroundColor(source, &color);
    FrameList list = {};
    const DecodeResult result = DecodeAllFrames(source, &list);
    FreeFrames(&list);
    return result;
}

int32_t Build(MemoryHandle source, const EffectDescriptor& effect, const BuildOptions& options) {
    HostContext host = {};
    host.callback = Accept;
    messages = 0;
    return RunBuild(
        {.window = nullptr, .host = &host, .source = source, .effect = &effect, .showMessage = CountMessage},
        options);
}

TEST(HostileBlocks, Are_refused_or_decoded_within_a_multiple_of_their_size) {
    size_t refused = 0;
    for (const HostileBlock& block : HostileBlocks()) {
        const bool accepted = IsAnimation(block.bytes.data(), block.bytes.size());
        if (block.verdict != Verdict::Either) {
            EXPECT_EQ(accepted, block.verdict == Verdict::Accepted) << block.name;
        }
        refused += !accepted;
        const MemoryCounts before = CountMemory();
        {
            const MemoryOwner source(MakeMemory(block.bytes));
            ResetMemoryCounts();
            const size_t held = CountMemory().liveBytes;
            const DecodeResult result = Decode(source.memory);
            if (accepted) {
                EXPECT_EQ(result, DecodeResult::Whole) << block.name;
            }
            EXPECT_LE(CountMemory().peakBytes - held, kMostTimes * block.bytes.size() + kTables)
                << block.name;
        }
        EXPECT_EQ(CountMemory().liveBlocks, before.liveBlocks) << block.name;
        EXPECT_EQ(CountMemory().lockedBlocks, before.lockedBlocks) << block.name;
        AddTried("hostile blocks");
    }
    EXPECT_GT(refused, 500u);
}

TEST(HostileBlocks, Are_built_with_every_effect_or_fail_with_the_message) {
    const HeldClock clock(12345);
    const std::vector<Output> outputs = Outputs();
    size_t number = 0;
    for (const HostileBlock& block : MutatedBlocks()) {
        const MemoryOwner source(MakeMemory(block.bytes));
        const MemoryCounts before = CountMemory();
        for (int i = 0; i < 2; ++i, ++number) {
            const Output& output = outputs[number % outputs.size()];
            const EffectDescriptor& effect = *DescriptorAt(number % EffectCount());
            ResetMemoryCounts();
            const int32_t built = Build(source.memory, effect, output.options);
            EXPECT_EQ(messages, built ? 0u : 1u) << block.name;
            if (built) {
                EXPECT_LE(CountMemory().peakBytes - before.liveBytes,
                          kMostTimesBuilt * block.bytes.size() + kBuildTables)
                    << block.name;
            }
            EXPECT_EQ(CountMemory().liveBlocks, before.liveBlocks) << block.name;
            if (block.name == "the base") {
                EXPECT_EQ(built, 1);
            }
            AddTried("builds of hostile blocks");
        }
    }
}

TEST(HostileBlocks, A_picture_of_one_bit_takes_its_multiple_and_no_more) {
    const MemoryOwner source(
        MakeMemory(MakeAnimationBlock({{BytesOf(RandomPicture(1024, 1024, 1, 1).handle)},
                                       {BytesOf(RandomPicture(1024, 1024, 2, 1).handle)}})));
    const size_t size = MemorySize(source.memory);
    ResetMemoryCounts();
    const size_t held = CountMemory().liveBytes;
    EXPECT_EQ(Decode(source.memory), DecodeResult::Whole);
    EXPECT_LE(CountMemory().peakBytes - held, kMostTimes * size);
    EXPECT_GE(CountMemory().peakBytes - held, 23 * size) << "the bound is not far off";
}

TEST(HostileBlocks, A_picture_for_which_memory_is_not_there_is_refused_at_once) {
    // A side of 16384 pixels in 1 bit: 32 MB, of which the frame would take 800.
    std::vector<uint8_t> bitmap = BytesOf(RandomPicture(8, 1, 1, 1).handle);
    const uint32_t side = 16384;
    std::memcpy(bitmap.data() + 4, &side, 4);
    std::memcpy(bitmap.data() + 8, &side, 4);
    bitmap.resize(48 + side / 8 * side);
    const MemoryOwner source(MakeMemory(MakeAnimationBlock({{bitmap}})));
    ASSERT_TRUE(source.memory);
    ResetMemoryCounts();
    // The copy of 1 bit is made, the picture of 24 bits is refused.
    RefuseAllocationsFrom(2);
    EffectDescriptor none = {};
    EXPECT_EQ(Build(source.memory, none, {}), 0);
    EXPECT_EQ(CountMemory().largestBytes, 40 + size_t{3} * side * side);
    EXPECT_LE(CountMemory().allocations, 3u) << "nothing is tried again";
    EXPECT_EQ(messages, 1u);
    ResetMemoryCounts();
}

}  // namespace
}  // namespace kfx::test
