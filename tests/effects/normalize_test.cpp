// SPDX-License-Identifier: MIT
#include "effects/effects.h"

#include <cstring>
#include <utility>

#include "framework/effect_operations.h"
#ifndef _WIN32
#include "framework/movable_memory_native.h"
#endif
#include "framework/settings.h"
#include "framework/source_animation.h"
#include "tests/effects/expected_controls.h"
#include "tests/support/animation_blocks.h"
#include "tests/support/effect_checks.h"

namespace kfx::test {
namespace {

const Values kPerFrame = {0};

Picture GreyPicture(int32_t width, int32_t height, uint32_t (*level)(int32_t i)) {
    Picture picture = FlatPicture(width, height, 0);
    const ImageLock lock(picture.handle);
    for (int32_t i = 0; i < width * height; ++i) {
        const uint32_t grey = level(i);
        SetDibPixel(lock.image, i % width, i / width, Rgb(grey, grey, grey));
    }
    return picture;
}

// The pictures one above the other, and the strip of one of them.
Picture Stacked(const Picture& upper, const Picture& lower) {
    const ImageLock a(upper.handle);
    const ImageLock b(lower.handle);
    Picture both = FlatPicture(a.image->width, a.image->height + b.image->height, 0);
    const ImageLock to(both.handle);
    for (int32_t y = 0; y < to.image->height; ++y)
        std::memcpy(PictureRow(to.image, y),
                    y < a.image->height ? PictureRow(a.image, y) : PictureRow(b.image, y - a.image->height),
                    StrideOf(to.image));
    return both;
}

std::vector<std::vector<uint8_t>> Build(const std::vector<const Picture*>& pictures) {
    std::vector<BlockFrame> frames;
    for (const Picture* picture : pictures) {
        frames.emplace_back();
        frames.back().bitmap = BytesOf(picture->handle);
    }
    const MemoryOwner source(MakeMemory(MakeAnimationBlock(frames)));
    FrameList list = {};
    EffectBuildContext context = {nullptr, &list, source.memory, nullptr};
    EXPECT_EQ(BuildEffect(kNormalize, &context), 1);
    std::vector<std::vector<uint8_t>> results;
    for (int32_t i = 0; i < list.count; ++i) {
        FrameEntry entry;
        EXPECT_TRUE(GetFrame(list, i, &entry));
        results.push_back(BytesOf(entry.image));
    }
    FreeFrames(&list);
    return results;
}

TEST(Normalize, Has_these_controls) {
    ExpectControls(kNormalize, "Normalize", 7419,
                   {
                       {.kind = ControlKind::CheckBox,
                        .id = 214,
                        .key = "Style019Distributed",
                        .builtIn = 1,
                        .text = "Distributed"},
                   });
}

TEST(Normalize, Equals_its_reference_on_pictures_of_all_sizes) {
    ExpectReferenceOnTrickyPictures(kNormalize, kPerFrame);
}

TEST(Normalize, Equals_its_reference_for_every_range_of_levels) {
    for (int32_t low = 0; low < 256; low += 5)
        for (int32_t high = low; high < 256; high += 3) {
            Picture source = RandomPicture(64, 2, 3);
            {
                const ImageLock lock(source.handle);
                for (int32_t x = 0; x < 64; ++x) {
                    const auto grey = static_cast<uint32_t>(x % 2 ? low : high);
                    SetDibPixel(lock.image, x, 0, Rgb(grey, grey, grey));
                    SetDibPixel(lock.image, x, 1, x % 2 ? Rgb(grey, 0, 255) : Rgb(0, grey, grey));
                }
            }
            ASSERT_TRUE(SameAsReference(kNormalize, source.handle, kPerFrame)) << low << ", " << high;
        }
}

TEST(Normalize, A_full_range_is_mapped_onto_254_levels) {
    // Two percent at either end and everything between.
    const Picture source = GreyPicture(100, 10, [](int32_t i) {
        return i < 20 ? 0u : i < 40 ? 255u : static_cast<uint32_t>(i) * 7 % 256;
    });
    const Picture result = Apply(kNormalize, source.handle, kPerFrame);
    for (int32_t y = 0; y < 10; ++y)
        for (int32_t x = 0; x < 100; ++x)
            EXPECT_EQ(RedOf(PixelOf(result.handle, x, y)), RedOf(PixelOf(source.handle, x, y)) * 254 / 255);
    EXPECT_EQ(RedOf(PixelOf(result.handle, 25, 0)), 254u);
}

TEST(Normalize, Fifty_pixels_are_stretched_between_their_own_ends) {
    const Picture source = GreyPicture(10, 5, [](int32_t i) { return 60 + static_cast<uint32_t>(i); });
    const Picture result = Apply(kNormalize, source.handle, kPerFrame);
    // The luminance of a grey is up to two below it; the range's own levels lie in the picture.
    EXPECT_TRUE(SameAsReference(kNormalize, source.handle, kPerFrame));
    EXPECT_LT(RedOf(PixelOf(result.handle, 0, 0)), 13u);
    EXPECT_GE(RedOf(PixelOf(result.handle, 9, 4)), 254u);
}

TEST(Normalize, Channels_beyond_the_range_of_luminance_are_clipped) {
    const Picture source = GreyPicture(10, 10, [](int32_t i) { return 100 + static_cast<uint32_t>(i % 10); });
    {
        const ImageLock lock(source.handle);
        SetDibPixel(lock.image, 0, 0, Rgb(255, 60, 0));  // its own luminance lies within the others'
    }
    const Picture result = Apply(kNormalize, source.handle, kPerFrame);
    EXPECT_EQ(PixelOf(result.handle, 0, 0), Rgb(255, 0, 0));
}

TEST(Normalize, One_luminance_leaves_the_picture_unchanged) {
    EXPECT_EQ(Apply(kNormalize, FlatPicture(9, 9, 0x336699).handle, kPerFrame).handle, nullptr);
    EXPECT_EQ(Apply(kNormalize, FlatPicture(1, 1, 0).handle, kPerFrame).handle, nullptr);
}

TEST(Normalize, A_rare_level_beside_one_that_holds_nearly_everything_still_counts) {
    // Less than a percent differs: both ends first fall on one level, then the first and last occupied ones
    // count.
    const Picture source = GreyPicture(100, 10, [](int32_t i) { return i ? 100u : 200u; });
    const Picture result = Apply(kNormalize, source.handle, kPerFrame);
    EXPECT_GE(RedOf(PixelOf(result.handle, 0, 0)), 254u);
    EXPECT_LT(RedOf(PixelOf(result.handle, 1, 0)), 10u);
}

TEST(Normalize, Distributed_stretches_all_frames_by_one_histogram) {
    settings.style019Distributed = 1;
    const Picture dark = GreyPicture(50, 20, [](int32_t i) { return 20 + static_cast<uint32_t>(i) % 60; });
    const Picture light = GreyPicture(50, 20, [](int32_t i) { return 120 + static_cast<uint32_t>(i) % 90; });
    const auto frames = Build({&dark, &light});
    const Picture expected = Apply(kNormalize, Stacked(dark, light).handle, kPerFrame);
    ASSERT_EQ(frames.size(), 2u);
    for (int32_t y = 0; y < 20; ++y)
        for (int32_t x = 0; x < 50; ++x) {
            const size_t at = sizeof(WorkingImage) + RowStride(50, 24) * static_cast<size_t>(19 - y) +
                              3 * static_cast<size_t>(x);
            ASSERT_EQ(frames[0][at], BlueOf(PixelOf(expected.handle, x, y)));
            ASSERT_EQ(frames[1][at], BlueOf(PixelOf(expected.handle, x, y + 20)));
        }
}

TEST(Normalize, Without_distributed_each_frame_is_stretched_by_itself) {
    settings.style019Distributed = 0;
    const Picture dark = GreyPicture(50, 20, [](int32_t i) { return 20 + static_cast<uint32_t>(i) % 60; });
    const Picture flat = FlatPicture(50, 20, 0x808080);
    const auto frames = Build({&dark, &flat});
    settings.style019Distributed = 1;
    ASSERT_EQ(frames.size(), 2u);
    EXPECT_EQ(frames[0], BytesOf(Apply(kNormalize, dark.handle, kPerFrame).handle));
    EXPECT_EQ(frames[1], BytesOf(flat.handle));
}

TEST(Normalize, Frames_of_one_luminance_stay_also_when_distributed) {
    settings.style019Distributed = 1;
    const Picture flat = FlatPicture(8, 8, 0x445566);
    const auto frames = Build({&flat, &flat, &flat});
    ASSERT_EQ(frames.size(), 3u);
    for (const auto& frame : frames) EXPECT_EQ(frame, BytesOf(flat.handle));
}

#ifndef _WIN32
TEST(Normalize, Without_memory_for_the_histogram_every_frame_stays) {
    const Picture picture = GreyPicture(20, 20, [](int32_t i) { return 50 + static_cast<uint32_t>(i) % 60; });
    const size_t blocks = CountMemory().liveBlocks;
    const GatheringPasses& passes = *kNormalize.gathering;
    uint64_t record[2] = {0, 0};
    RefuseAllocation(1);
    passes.gather(picture.handle, record);
    ResetMemoryCounts();
    passes.gather(picture.handle, record);  // memory is back, but the first frame is missing
    EXPECT_EQ(passes.apply(picture.handle, record), nullptr);
    passes.release(record);
    EXPECT_EQ(CountMemory().liveBlocks, blocks);
    EXPECT_EQ(record[0], 0u);
}
#endif

TEST(Normalize, Any_value_is_survived) { ExpectAnyValueIsSurvived(kNormalize, {1}); }

TEST(Normalize, Refused_memory_is_survived) {
    ExpectRefusedMemoryIsSurvived(kNormalize, RandomPicture(9, 8, 1).handle, kPerFrame);
}

}  // namespace
}  // namespace kfx::test
