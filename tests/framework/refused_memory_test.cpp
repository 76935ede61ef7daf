// SPDX-License-Identifier: MIT
// Every allocation refused in turn: nothing crashes, nothing leaks, nothing stays locked.
#include <gtest/gtest.h>

#include <functional>

#include "framework/frame_list.h"
#include "framework/kernel_cache.h"
#include "framework/movable_memory_native.h"
#include "framework/scaler.h"
#include "framework/source_animation.h"
#include "tests/support/animation_blocks.h"
#include "tests/support/pictures.h"

namespace kfx::test {
namespace {

// Runs `attempt` with its first, second, third ... allocation refused, until it needs no more of them. It
// answers whether it succeeded and frees what it was given.
void RefuseEachInTurn(const std::function<bool()>& attempt) {
    const MemoryCounts before = CountMemory();
    for (size_t number = 1; number < 1000; ++number) {
        RefuseAllocation(number);
        const bool succeeded = attempt();
        const bool refused = CountMemory().allocations >= number;
        ResetMemoryCounts();
        EXPECT_EQ(CountMemory().liveBlocks, before.liveBlocks) << "allocation " << number;
        EXPECT_EQ(CountMemory().lockedBlocks, before.lockedBlocks) << "allocation " << number;
        EXPECT_EQ(succeeded, !refused) << "allocation " << number;
        if (!refused) return;
    }
    ADD_FAILURE() << "the attempt never ends";
}

bool FreeIfMade(ImageHandle image) {
    FreeMemory(image);
    return image != nullptr;
}

TEST(RefusedMemory, first_frame) {
    for (const int32_t bitCount : {1, 8, 24}) {
        const Picture picture = RandomPicture(5, 3, 1, bitCount);
        sourceAnimation = MakeMemory(MakeAnimationBlock({{BytesOf(picture.handle), {}}}));
        RefuseEachInTurn([] { return FreeIfMade(FetchFirstFrame()); });
        FreeMemory(sourceAnimation);
        sourceAnimation = nullptr;
    }
}

TEST(RefusedMemory, all_frames_and_what_was_appended_before_stays) {
    const Picture picture = RandomPicture(5, 3, 1, 8);
    const BlockFrame frame = {BytesOf(picture.handle), {}};
    sourceAnimation = MakeMemory(MakeAnimationBlock({frame, frame, frame}));
    int32_t most = 0;
    RefuseEachInTurn([&most] {
        FrameList list = {};
        const bool decoded = DecodeAllFrames(&list);
        EXPECT_GE(list.count, most);  // later refusals leave at least as many frames
        most = list.count;
        FreeFrames(&list);
        return decoded;
    });
    EXPECT_EQ(most, 3);
    FreeMemory(sourceAnimation);
    sourceAnimation = nullptr;
}

TEST(RefusedMemory, images_and_copies) {
    const Picture picture = RandomPicture(5, 3, 1, 8);
    RefuseEachInTurn([] { return FreeIfMade(CreateDib(5, 5, nullptr, 8)); });
    RefuseEachInTurn([&picture] { return FreeIfMade(ConvertTo24Bits(picture.handle)); });
    RefuseEachInTurn([&picture] {
        const ImageLock lock(picture.handle);
        return FreeIfMade(DuplicateImage(lock.image));
    });
}

TEST(RefusedMemory, scaler) {
    for (const int32_t bitCount : {8, 24}) {
        const Picture picture = RandomPicture(40, 30, 1, bitCount);
        for (const int32_t percentage : {10, 100, 250})
            RefuseEachInTurn(
                [&] { return FreeIfMade(ScaleByPercentage(picture.handle, percentage, percentage)); });
        RefuseEachInTurn([&] { return FreeIfMade(Resample(picture.handle, 3, 60, 1.0)); });
        RefuseEachInTurn([&] { return FreeIfMade(Resample(picture.handle, 60, 3, 1.0)); });
    }
}

TEST(RefusedMemory, kernel_cache) {
    RefuseEachInTurn([] {
        KernelCache cache;
        bool fresh = false;
        return CachedTable(&cache, "key", 3, 100, &fresh) != nullptr;
    });
}

TEST(RefusedMemory, a_list_that_cannot_grow_stays_as_it_was) {
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
