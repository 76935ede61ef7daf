// SPDX-License-Identifier: MIT
// A build that runs out of memory says so and frees everything, and no build keeps more than it needs.
#include <gtest/gtest.h>

#include "builder/build_driver.h"
#include "builder/remap.h"
#include "framework/movable_memory_native.h"
#include "framework/source_animation.h"
#include "kernels/color_index.h"
#include "tests/builder/build_run.h"
#include "tests/support/animation_blocks.h"
#include "tests/support/pictures.h"

namespace kfx::test {
namespace {

std::vector<uint8_t> ShadedBlock(int32_t frames, int32_t width, int32_t height) {
    std::vector<BlockFrame> bitmaps;
    for (int32_t i = 0; i < frames; ++i) {
        const Picture picture = ShadedPicture(width, height, static_cast<uint32_t>(i));
        bitmaps.push_back({BytesOf(picture.handle)});
    }
    return MakeAnimationBlock(bitmaps);
}

struct NamedOptions {
    const char* name;
    BuildOptions options;
};

std::vector<NamedOptions> OptionSets() {
    BuildOptions plain = BuiltInOptions();
    BuildOptions gray = plain;
    gray.dither = true;
    gray.paletteChoice = 0;
    BuildOptions custom = plain;
    custom.customPalette = custom.dither = true;
    BuildOptions small = plain;
    small.customPalette = small.supercompress = small.fastRemap = true;
    BuildOptions trueColor = plain;
    trueColor.trueColor = true;
    return {{"plain", plain},
            {"gray dither", gray},
            {"custom, dither", custom},
            {"custom, supercompress, fast", small},
            {"true colour", trueColor}};
}

size_t CountLocks() { return CountMemory().lockedBlocks; }

void ExpectNothingLeft(const MemoryCounts& before, const std::string& name) {
    EXPECT_EQ(CountMemory().liveBlocks, before.liveBlocks) << name;
    EXPECT_EQ(CountMemory().liveBytes, before.liveBytes) << name;
    EXPECT_EQ(CountMemory().lockedBlocks, before.lockedBlocks) << name;
}

// Runs the build with the seam refusing as told; the block itself is allocated first (number 1).
int32_t BuildRefusing(BuildRun* run, const std::vector<uint8_t>& block, const BuildOptions& options,
                      size_t number, bool andAllAfter) {
    if (andAllAfter)
        RefuseAllocationsFrom(number + 1);
    else
        RefuseAllocation(number + 1);
    const int32_t result = BuildWith(run, block, options);
    ResetMemoryCounts();
    return result;
}

TEST(BuildMemory, Each_refused_allocation_gives_the_message_and_leaves_nothing) {
    const std::vector<uint8_t> block = ShadedBlock(3, 21, 14);
    for (const NamedOptions& named : OptionSets()) {
        BuildRun good;
        ResetMemoryCounts();
        ASSERT_EQ(BuildWith(&good, block, named.options), 1);
        const size_t allocations = CountMemory().allocations - 1;
        for (size_t number = 1; number <= allocations; ++number) {
            for (const bool andAllAfter : {false, true}) {
                const std::string name = std::string(named.name) + ", allocation " + std::to_string(number) +
                                         " of " + std::to_string(allocations) +
                                         (andAllAfter ? " and all after" : "");
                const MemoryCounts before = CountMemory();
                BuildRun run;
                const int32_t result = BuildRefusing(&run, block, named.options, number, andAllAfter);
                ExpectNothingLeft(before, name);
                EXPECT_EQ(result, 0) << name;
                EXPECT_TRUE(run.frames.empty()) << name;
                EXPECT_EQ(run.messages, std::vector<BuildMessage>{BuildMessage::MemoryError}) << name;
            }
        }
    }
}

TEST(BuildMemory, A_build_leaves_nothing_whatever_the_host_refuses) {
    const std::vector<uint8_t> block = ShadedBlock(3, 21, 14);
    for (const NamedOptions& named : OptionSets()) {
        for (const uint32_t request : {0u, 1u, 2u}) {
            const MemoryCounts before = CountMemory();
            BuildRun run;
            run.refusedRequest = request;
            run.refusedOccurrence = request == 2 ? 3 : 1;
            BuildWith(&run, block, named.options);
            ExpectNothingLeft(before, named.name);
        }
    }
}

size_t lastLiveBlocks;  // written by NoteLiveBlocks, at every request

size_t NoteLiveBlocks() {
    lastLiveBlocks = CountMemory().liveBlocks;
    return 0;
}

TEST(BuildMemory, A_refused_frame_frees_every_frame_before_the_task_is_closed) {
    const size_t before = CountMemory().liveBlocks;
    BuildRun run;
    run.refusedRequest = 2;
    run.refusedOccurrence = 2;
    run.countLocks = NoteLiveBlocks;
    EXPECT_EQ(BuildWith(&run, ShadedBlock(3, 21, 14), BuiltInOptions()), 0);
    EXPECT_EQ(lastLiveBlocks, before + 1) << "only the source is left at the last request";
}

TEST(BuildMemory, Nothing_but_the_source_stays_locked_across_a_request) {
    for (const NamedOptions& named : OptionSets()) {
        BuildRun run;
        run.countLocks = CountLocks;
        EXPECT_EQ(BuildWith(&run, ShadedBlock(3, 21, 14), named.options), 1);
        // The tables that answer for colours live, locked, through the remapping stage.
        EXPECT_LE(run.mostLocks, 1u) << named.name;
    }
}

TEST(BuildMemory, Two_colour_output_makes_no_table_of_all_colours) {
    BuildOptions fixed = BuiltInOptions();
    fixed.paletteChoice = 0;
    BuildOptions dithered = fixed;
    dithered.dither = true;
    BuildOptions custom = BuiltInOptions();
    custom.customPalette = true;  // of one colour and the background's white
    const Picture flat = FlatPicture(21, 14, 0x305070);
    const std::vector<uint8_t> block = MakeAnimationBlock({{BytesOf(flat.handle)}});
    for (const BuildOptions& options : {fixed, dithered, custom}) {
        BuildRun run;
        ResetMemoryCounts();
        ASSERT_EQ(BuildWith(&run, block, options), 1);
        EXPECT_EQ(run.task.bitsPerPixel, 1u);
        EXPECT_LE(CountMemory().largestBytes, block.size()) << "the source is the largest block";
    }
}

TEST(BuildMemory, Only_full_colour_pictures_need_the_table_of_all_colours) {
    RemapTarget target;
    for (const int32_t bitCount : {1, 4, 8}) {
        const Picture source = RandomPicture(9, 5, 1, bitCount);
        ResetMemoryCounts();
        const Picture converted(PlainRemap(source.handle, &target));
        EXPECT_TRUE(converted.handle);
        EXPECT_EQ(CountMemory().allocations, 1u) << bitCount << " bits: the picture";
    }
}

TEST(BuildMemory, Dithering_full_colour_pictures_needs_a_picture_errors_and_the_table_of_colours) {
    const Picture source = RandomPicture(9, 5, 1);
    RemapTarget target;
    ResetMemoryCounts();
    const Picture converted(DitherRemap(source.handle, &target));
    EXPECT_TRUE(converted.handle);
    EXPECT_EQ(CountMemory().allocations, 3u);
}

TEST(BuildMemory, A_build_holds_the_source_the_frames_one_working_copy_and_its_tables) {
    constexpr int32_t kFrames = 12;
    constexpr size_t kTables = sizeof(ColorAnswers) + (1 << 16);
    // Large frames with as many colours as make the quantizer build its tree, in a corner.
    Picture picture = FlatPicture(320, 240, 0x305070);
    {
        const ImageLock lock(picture.handle);
        for (int32_t i = 0; i < 600; ++i)
            SetDibPixel(lock.image, i % 30, i / 30, static_cast<uint32_t>(i) * 0x10305 & 0xFFFFFF);
    }
    const std::vector<uint8_t> block =
        MakeAnimationBlock(std::vector<BlockFrame>(kFrames, BlockFrame{BytesOf(picture.handle)}));
    const size_t frame = 320 * 240 * 3 + 40;
    for (const NamedOptions& named : OptionSets()) {
        const size_t composite = named.options.supercompress ? frame + kFrames * (320 / 8 * 240 + 48) : 0;
        BuildRun run;
        ResetMemoryCounts();
        const size_t before = CountMemory().liveBytes;
        EXPECT_EQ(BuildWith(&run, block, named.options), 1);
        const size_t held = CountMemory().peakBytes - before;
        EXPECT_LE(held, block.size() + kFrames * (frame + 56) + frame + composite + kTables) << named.name;
    }
}

}  // namespace
}  // namespace kfx::test
