// SPDX-License-Identifier: MIT
// Builds in which an index is reserved: supercompression, and a local background.
#include <gtest/gtest.h>

#include "tests/builder/build_scene.h"
#include "tests/reference/remap_reference.h"

namespace kfx::test {
namespace {

std::vector<Picture> Shades(int32_t frames) {
    std::vector<Picture> pictures(static_cast<size_t>(frames));
    uint32_t number = 0;
    for (Picture& picture : pictures) picture = ShadedPicture(48, 32, number++ / 2);
    return pictures;
}

// How the handed-over frames look to a viewer: colours of each moment, transparent pixels showing what was
// there.
std::vector<std::vector<uint32_t>> Play(const BuildRun& run) {
    std::vector<std::vector<uint32_t>> moments;
    std::vector<uint32_t> screen;
    for (const HandedFrame& frame : run.frames) {
        const Picture image = ImageOf(frame);
        const ImageLock lock(image.handle);
        const auto width = static_cast<size_t>(lock.image->width);
        screen.resize(width * static_cast<size_t>(lock.image->height));
        for (int32_t y = 0; y < lock.image->height; ++y) {
            for (int32_t x = 0; x < lock.image->width; ++x) {
                const uint32_t index = GetDibPixel(lock.image, x, y);
                if (static_cast<int32_t>(index) == frame.record.transparentIndex) continue;
                const uint8_t* color = ColorTableOf(lock.image) + 4 * index;
                screen[static_cast<size_t>(y) * width + static_cast<size_t>(x)] =
                    Rgb(color[2], color[1], color[0]);
            }
        }
        moments.push_back(screen);
    }
    return moments;
}

TEST(Build, One_frame_alone_is_never_supercompressed) {
    BuildRun run;
    BuildOptions options = BuiltInOptions();
    options.supercompress = options.customPalette = true;
    EXPECT_EQ(BuildWith(&run, BlockOf(MovingBar(1)), options), 1);
    EXPECT_FALSE(HasStatus(run, "Supercompressing"));
    ASSERT_EQ(run.frames.size(), 1u);
    EXPECT_EQ(run.frames[0].record.transparentIndex, -1);
}

TEST(Build, A_supercompressed_animation_of_few_colours_plays_like_the_plain_one) {
    BuildOptions options = BuiltInOptions();
    options.customPalette = true;
    BuildRun plain, small;
    const std::vector<uint8_t> block = BlockOf(MovingBar(9));
    EXPECT_EQ(BuildWith(&plain, block, options), 1);
    options.supercompress = true;
    EXPECT_EQ(BuildWith(&small, block, options), 1);
    EXPECT_TRUE(HasStatus(small, "Supercompressing"));
    EXPECT_EQ(Play(small), Play(plain));
    int64_t transparent = 0;
    const Picture last = ImageOf(small.frames.back());
    const ImageLock lock(last.handle);
    const auto reserved = static_cast<uint32_t>(small.frames.back().record.transparentIndex);
    for (int32_t i = 0; i < 48 * 32; ++i) transparent += GetDibPixel(lock.image, i % 48, i / 48) == reserved;
    EXPECT_GT(transparent, 48 * 32 * 3 / 4) << "most pixels do not change";
}

TEST(Build, A_supercompressed_animation_of_many_colours_plays_like_frames_remapped_whole) {
    const std::vector<Picture> pictures = Shades(8);
    BuildOptions options = BuiltInOptions();
    options.customPalette = options.supercompress = true;
    for (const bool fast : {false, true}) {
        options.fastRemap = fast;
        BuildRun run;
        EXPECT_EQ(BuildWith(&run, BlockOf(pictures), options), 1);
        const int32_t colors = run.frames[1].record.transparentIndex;
        ASSERT_GT(colors, 0);
        const std::vector<std::vector<uint32_t>> moments = Play(run);
        for (size_t i = 0; i < pictures.size(); ++i) {
            const auto bits = static_cast<int32_t>(run.task.bitsPerPixel);
            const Picture whole(
                ReferencePlainRemap(pictures[i].handle, {run.task.palette, bits, colors, fast, 20, 20}));
            std::vector<uint32_t> expected(48 * 32);
            int32_t p = 0;
            for (uint32_t& color : expected) {
                color = EntryOf(run.task.palette, PixelOf(whole.handle, p % 48, p / 48));
                ++p;
            }
            EXPECT_EQ(moments[i], expected) << "frame " << i << ", fast " << fast;
        }
    }
}

TEST(Build, Two_identical_frames_make_the_second_entirely_transparent) {
    BuildOptions options = BuiltInOptions();
    options.customPalette = options.supercompress = true;
    BuildRun run;
    EXPECT_EQ(BuildWith(&run, BlockOf(Shades(2)), options), 1);
    const Picture second = ImageOf(run.frames[1]);
    const auto reserved = static_cast<uint32_t>(run.frames[1].record.transparentIndex);
    for (int32_t i = 0; i < 48 * 32; ++i) ASSERT_EQ(PixelOf(second.handle, i % 48, i / 48), reserved);
}

TEST(Build, The_first_supercompressed_frame_shows_white_through_the_reserved_entry) {
    std::vector<Picture> pictures = MovingBar(2);
    {
        const ImageLock lock(pictures[0].handle);
        SetDibPixel(lock.image, 3, 3, 0xFFFFFF);
    }
    BuildOptions options = BuiltInOptions();
    options.customPalette = options.supercompress = true;
    BuildRun run;
    EXPECT_EQ(BuildWith(&run, BlockOf(pictures), options), 1);
    const Picture first = ImageOf(run.frames[0]);
    const auto reserved = static_cast<uint32_t>(run.frames[1].record.transparentIndex);
    EXPECT_EQ(PixelOf(first.handle, 3, 3), reserved);
    EXPECT_EQ(EntryOf(run.task.palette, reserved), 0xFFFFFFu);
    EXPECT_EQ(run.frames[0].record.transparentIndex, -1);
}

TEST(Build, With_a_fixed_palette_supercompressed_frames_are_handed_over_whole) {
    BuildOptions options = BuiltInOptions();
    BuildRun plain, small;
    const std::vector<uint8_t> block = BlockOf(MovingBar(4));
    BuildWith(&plain, block, options);
    options.supercompress = true;
    EXPECT_EQ(BuildWith(&small, block, options), 1);
    ASSERT_EQ(small.frames.size(), 4u);
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(small.frames[i].bitmap, plain.frames[i].bitmap);
        EXPECT_EQ(small.frames[i].record.transparentIndex, -1);
    }
}

// An effect whose background colour is that of the moving bar's scene.
int32_t AnswerScene(void*, int32_t question) { return question == 0 ? int32_t{Rgb(10, 60, 90)} : -1; }

TEST(Build, With_a_local_background_pixels_of_its_colour_take_the_reserved_index) {
    const EffectDescriptor effect = EffectWith(Decode, AnswerScene);
    BuildOptions options = BuiltInOptions();
    options.customPalette = options.localBackground = true;
    BuildRun run;
    EXPECT_EQ(BuildWith(&run, BlockOf(MovingBar(2)), options, &effect), 1);
    const uint32_t reserved = run.task.reservedIndex;
    EXPECT_EQ(reserved, 33u) << "32 bar colours and the background: no entry is appended, one is reserved";
    EXPECT_EQ(EntryOf(run.task.palette, reserved), Rgb(10, 60, 90));
    for (const HandedFrame& frame : run.frames) {
        EXPECT_EQ(frame.record.localBackground, 1u);
        EXPECT_EQ(frame.record.transparentIndex, static_cast<int32_t>(reserved));
        EXPECT_EQ(PixelOf(ImageOf(frame).handle, 40, 3), reserved);
        EXPECT_NE(PixelOf(ImageOf(frame).handle, 5, 3), reserved);
    }
}

TEST(Build, With_a_fixed_palette_a_local_background_marks_nothing) {
    const EffectDescriptor effect = EffectWith(Decode, AnswerScene);
    BuildOptions options = BuiltInOptions();
    BuildRun plain, local;
    BuildWith(&plain, BlockOf(MovingBar(2)), options, &effect);
    options.localBackground = true;
    EXPECT_EQ(BuildWith(&local, BlockOf(MovingBar(2)), options, &effect), 1);
    EXPECT_EQ(local.frames[1].bitmap, plain.frames[1].bitmap);
    EXPECT_EQ(local.frames[1].record.localBackground, 1u);
    EXPECT_EQ(local.frames[1].record.transparentIndex, -1);
    EXPECT_EQ(local.task.reservedIndex, UINT32_MAX);
}

TEST(Build, A_local_background_gives_way_to_supercompression_and_to_an_effect_without_a_colour) {
    const EffectDescriptor effect = EffectWith(Decode, AnswerScene);
    BuildOptions options = BuiltInOptions();
    options.customPalette = options.localBackground = options.supercompress = true;
    BuildRun super, colorless, single;
    EXPECT_EQ(BuildWith(&super, BlockOf(MovingBar(2)), options, &effect), 1);
    EXPECT_EQ(super.frames[0].record.localBackground, 0u);
    EXPECT_EQ(super.task.reservedIndex, 0u);
    // Even where one frame alone then switches supercompression off.
    EXPECT_EQ(BuildWith(&single, BlockOf(MovingBar(1)), options, &effect), 1);
    EXPECT_EQ(single.frames[0].record.localBackground, 0u);
    options.supercompress = false;
    EXPECT_EQ(BuildWith(&colorless, BlockOf(MovingBar(2)), options), 1);
    EXPECT_EQ(colorless.frames[0].record.localBackground, 0u);
}

}  // namespace
}  // namespace kfx::test
