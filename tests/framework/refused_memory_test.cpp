// SPDX-License-Identifier: MIT
// Every allocation refused in turn: nothing crashes, nothing leaks, nothing stays locked.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>

#include "framework/effect_operations.h"
#include "framework/frame_list.h"
#include "framework/kernel_cache.h"
#include "framework/movable_memory_native.h"
#include "framework/settings.h"
#include "framework/source_animation.h"
#include "kernels/scaler.h"
#include "tests/support/animation_blocks.h"
#include "tests/support/pictures.h"

namespace kfx::test {
namespace {

// Runs `attempt` with its first, second, third ... allocation refused, and then each of its locks, until it
// needs no more of them. It answers whether it succeeded and frees what it was given.
void RefuseEachInTurn(const std::function<bool()>& attempt) {
    const MemoryCounts before = CountMemory();
    for (const bool locks : {false, true}) {
        for (size_t number = 1;; ++number) {
            ASSERT_LT(number, 1000u) << "the attempt never ends";
            locks ? RefuseLock(number) : RefuseAllocation(number);
            const bool succeeded = attempt();
            const MemoryCounts after = CountMemory();
            const bool refused = (locks ? after.locks : after.allocations) >= number;
            ResetMemoryCounts();
            const std::string name = (locks ? "lock " : "allocation ") + std::to_string(number);
            EXPECT_EQ(after.liveBlocks, before.liveBlocks) << name;
            EXPECT_EQ(after.lockedBlocks, before.lockedBlocks) << name;
            EXPECT_EQ(after.strayUnlocks, before.strayUnlocks) << name;
            EXPECT_EQ(after.lockedFrees, before.lockedFrees) << name;
            EXPECT_EQ(succeeded, !refused) << name;
            if (!refused) break;
        }
    }
}

bool FreeIfMade(ImageHandle image) {
    FreeMemory(image);
    return image != nullptr;
}

TEST(RefusedMemory, First_frame) {
    for (const int32_t bitCount : {1, 8, 24}) {
        const Picture picture = RandomPicture(5, 3, 1, bitCount);
        const MemoryOwner source(MakeMemory(MakeAnimationBlock({{BytesOf(picture.handle), {}}})));
        RefuseEachInTurn([&source] { return FreeIfMade(FetchFirstFrame(source.memory)); });
    }
}

TEST(RefusedMemory, All_frames) {
    const Picture picture = RandomPicture(5, 3, 1, 8);
    const BlockFrame frame = {BytesOf(picture.handle), {}};
    const MemoryOwner source(MakeMemory(MakeAnimationBlock({frame, frame, frame})));
    int32_t most = 0;
    RefuseEachInTurn([&most, &source] {
        FrameList list = {};
        const DecodeResult result = DecodeAllFrames(source.memory, &list);
        EXPECT_NE(result, DecodeResult::None);
        most = std::max(most, int32_t{list.count});
        FreeFrames(&list);
        return result == DecodeResult::Whole;
    });
    EXPECT_EQ(most, 3);
}

TEST(RefusedMemory, Images_and_copies) {
    const Picture picture = RandomPicture(5, 3, 1, 8);
    RefuseEachInTurn([] { return FreeIfMade(CreateDib(5, 5, nullptr, 8)); });
    RefuseEachInTurn([&picture] { return FreeIfMade(ConvertTo24Bits(picture.handle)); });
    RefuseEachInTurn([&picture] {
        const ImageLock lock(picture.handle);
        return lock.image && FreeIfMade(DuplicateImage(lock.image));
    });
}

TEST(RefusedMemory, Scaler) {
    for (const int32_t bitCount : {8, 24}) {
        const Picture picture = RandomPicture(40, 30, 1, bitCount);
        for (const int32_t percentage : {10, 100, 250})
            RefuseEachInTurn(
                [&] { return FreeIfMade(ScaleByPercentage(picture.handle, percentage, percentage)); });
        RefuseEachInTurn([&] { return FreeIfMade(Resample(picture.handle, 3, 60, 1.0)); });
        RefuseEachInTurn([&] { return FreeIfMade(Resample(picture.handle, 60, 3, 1.0)); });
    }
}

TEST(RefusedMemory, Kernel_cache) {
    RefuseEachInTurn([] {
        KeptTable cache;
        bool fresh = false;
        return CachedTable(&cache, "key", 3, 100, &fresh) != nullptr;
    });
}

TEST(RefusedMemory, A_source_that_cannot_be_read_is_not_a_missing_one) {
    uint32_t color = 0;
    FrameList list = {};
    EXPECT_EQ(DecodeAllFrames(nullptr, &list), DecodeResult::None) << "none at all";
    EXPECT_TRUE(ReadBackgroundColor(nullptr, &color));
    settings.localBackgroundUse = 0;
    const MemoryOwner source(MakeMemory(MakeAnimationBlock({})));
    for (void (*const refuse)(size_t) : {RefuseLock, RefuseSize}) {
        refuse(1);
        EXPECT_EQ(DecodeAllFrames(source.memory, &list), DecodeResult::Incomplete);
        refuse(1);
        EXPECT_FALSE(ReadBackgroundColor(source.memory, &color));
    }
    ResetMemoryCounts();
    EXPECT_EQ(DecodeAllFrames(source.memory, &list), DecodeResult::Whole);
    FreeFrames(&list);
    settings = Settings();
}

TEST(RefusedMemory, Frames_before_a_refusal_stay_in_the_list) {
    const Picture picture = RandomPicture(5, 3, 1, 24);
    const BlockFrame frame = {BytesOf(picture.handle), {}};
    const MemoryOwner source(MakeMemory(MakeAnimationBlock({frame, frame})));
    FrameList list = {};
    ResetMemoryCounts();
    EXPECT_EQ(DecodeAllFrames(source.memory, &list), DecodeResult::Whole);
    const size_t last = CountMemory().allocations;
    FreeFrames(&list);
    RefuseAllocation(last);
    EXPECT_EQ(DecodeAllFrames(source.memory, &list), DecodeResult::Incomplete);
    ResetMemoryCounts();
    const int32_t count = list.count;
    EXPECT_EQ(count, 1);
    FreeFrames(&list);
}

// A kernel and two passes to which nothing is refused.
ImageHandle Shrink(ImageHandle, const KernelInput&) {
    const UncountedMemory aside;
    return CreateDib(2, 1, nullptr, 24);
}

bool gatheringWanted;
int gatheredFrames, unreleased;  // written by kPasses

constexpr GatheringPasses kPasses = {[](const KernelInput&) { return gatheringWanted; },
                                     [](ImageHandle, uint64_t[2]) { unreleased += gatheredFrames++ == 0; },
                                     [](ImageHandle, const uint64_t[2]) {
                                         const UncountedMemory aside;
                                         return CreateDib(2, 1, nullptr, 24);
                                     },
                                     [](uint64_t[2]) { unreleased -= gatheredFrames != 0; }};

TEST(RefusedMemory, An_effect_fails_by_every_refusal_outside_its_kernel_and_releases_what_it_gathered) {
    const Effect effect = {.name = "Test", .apply = Shrink, .gathering = &kPasses};
    const Picture picture = RandomPicture(5, 3, 1, 8);
    const BlockFrame frame = {BytesOf(picture.handle), {}};
    settings.localBackgroundUse = 0;
    const MemoryOwner source(MakeMemory(MakeAnimationBlock({frame, frame})));
    for (const bool gathers : {false, true}) {
        gatheringWanted = gathers;
        RefuseEachInTurn([&effect, &source] {
            gatheredFrames = unreleased = 0;
            FrameList list = {};
            HostContext host = {};
            EffectBuildContext context = {nullptr, &list, source.memory, &host};
            const int32_t result = BuildEffect(effect, &context);
            FreeFrames(&list);
            EXPECT_EQ(unreleased, 0);
            return result == 1;
        });
    }
    settings = Settings();
}

FrameEntry EntryWith(ImageHandle image, ImageHandle changeMask) {
    FrameEntry entry = {};
    entry.image = image;
    entry.changeMask = changeMask;
    return entry;
}

ImageHandle NewImage() { return CreateDib(2, 2, nullptr, 24); }

TEST(RefusedMemory, A_list_is_freed_with_all_its_images_though_no_lock_is_granted) {
    const size_t before = CountMemory().liveBlocks;
    FrameList list = {};
    for (int i = 0; i < 40; ++i) ASSERT_TRUE(AppendFrame(&list, EntryWith(NewImage(), nullptr)));
    FrameEntry entry;
    for (int i = 0; i < 40; i += 3) {
        ASSERT_TRUE(GetFrame(list, i, &entry));
        entry.changeMask = NewImage();
        ASSERT_TRUE(PutFrame(list, i, entry));
        ASSERT_TRUE(ReplaceImage(list, i, entry, NewImage()));
    }
    RefuseLocksFrom(1);
    EXPECT_FALSE(GetFrame(list, 0, &entry));
    FreeFrames(&list);
    ResetMemoryCounts();
    EXPECT_EQ(CountMemory().liveBlocks, before);
}

TEST(RefusedMemory, An_entry_that_cannot_be_put_leaves_its_image_with_the_caller) {
    const size_t before = CountMemory().liveBlocks;
    FrameList list = {};
    ASSERT_TRUE(AppendFrame(&list, EntryWith(NewImage(), nullptr)));
    const ImageHandle spare = NewImage();
    RefuseLock(1);
    EXPECT_FALSE(AppendFrame(&list, EntryWith(spare, nullptr)));
    RefuseLock(1);
    EXPECT_FALSE(PutFrame(list, 0, EntryWith(spare, nullptr)));
    ResetMemoryCounts();
    const int32_t count = list.count;
    EXPECT_EQ(count, 1);
    FreeMemory(spare);
    FreeFrames(&list);
    EXPECT_EQ(CountMemory().liveBlocks, before);
}

TEST(RefusedMemory, A_replacement_that_cannot_be_put_is_freed_and_the_old_image_stays) {
    const size_t before = CountMemory().liveBlocks;
    FrameList list = {};
    ASSERT_TRUE(AppendFrame(&list, EntryWith(NewImage(), nullptr)));
    FrameEntry entry;
    ASSERT_TRUE(GetFrame(list, 0, &entry));
    const ImageHandle replacement = NewImage();
    RefuseLock(1);
    EXPECT_FALSE(ReplaceImage(list, 0, entry, replacement));
    ResetMemoryCounts();
    FrameEntry kept;
    ASSERT_TRUE(GetFrame(list, 0, &kept));
    EXPECT_EQ(kept.image, entry.image);
    FreeFrames(&list);
    EXPECT_EQ(CountMemory().liveBlocks, before);
}

TEST(RefusedMemory, A_list_that_cannot_grow_stays_as_it_was) {
    FrameList list = {};
    FrameEntry entry = {};
    entry.field3 = 5;
    ASSERT_TRUE(AppendFrame(&list, entry));
    RefuseAllocation(1);
    EXPECT_FALSE(AppendFrame(&list, entry));
    ResetMemoryCounts();
    EXPECT_EQ(list.count, 1);
    ASSERT_TRUE(GetFrame(list, 0, &entry));
    EXPECT_EQ(entry.field3, 5);
    FreeFrames(&list);
}

}  // namespace
}  // namespace kfx::test
