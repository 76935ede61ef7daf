// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "media/animation.h"
#include "tests/media/gif_builder.h"
#include "tests/media/reading.h"

namespace kfx {
namespace {

using test::BuildGif;
using test::Bytes;
using test::ErrorOf;
using test::Gif;
using test::Part;
using test::ReadOrFail;
using test::ShowFrame;
using test::TestGif;
using test::TestImage;

TEST(GifReader, A_frame_kept_or_unspecified_stays_under_the_next_one) {
    for (const int disposal : {0, 1, 5, 6, 7}) {
        const Animation animation =
            ReadOrFail(BuildGif(Gif(3, 2, {Part("RRR/RRR", 0, 0, disposal), Part("GG", 1, 1, 0)})));
        ASSERT_EQ(animation.frames.size(), 2u);
        EXPECT_EQ(ShowFrame(animation, 0), "RRR/RRR");
        EXPECT_EQ(ShowFrame(animation, 1), "RRR/RGG") << disposal;
        EXPECT_EQ(animation.frames[0].disposal, disposal);
    }
}

TEST(GifReader, Disposal_to_background_clears_the_rectangle_to_transparent) {
    const Animation animation = ReadOrFail(
        BuildGif(Gif(3, 3, {Part("RRR/RRR/RRR", 0, 0, 1), Part("GG/GG", 1, 1, 2), Part("B", 0, 0, 1)})));
    EXPECT_EQ(ShowFrame(animation, 1), "RRR/RGG/RGG");
    EXPECT_EQ(ShowFrame(animation, 2), "BRR/R../R..");
}

TEST(GifReader, Disposal_to_previous_restores_what_stood_before_the_frame) {
    for (const int disposal : {3, 4}) {
        const Animation animation =
            ReadOrFail(BuildGif(Gif(3, 2,
                                    {Part("RRR/RRR", 0, 0, 1), Part("GG", 0, 0, disposal),
                                     Part("B", 2, 1, disposal), Part("Y", 1, 1, 0)})));
        EXPECT_EQ(ShowFrame(animation, 1), "GGR/RRR");
        EXPECT_EQ(ShowFrame(animation, 2), "RRR/RRB") << disposal;
        EXPECT_EQ(ShowFrame(animation, 3), "RRR/RYR") << disposal;
    }
}

TEST(GifReader, Disposal_to_previous_of_the_first_frame_restores_an_empty_canvas) {
    const Animation animation = ReadOrFail(BuildGif(Gif(2, 1, {Part("RR", 0, 0, 3), Part("G", 1, 0, 0)})));
    EXPECT_EQ(ShowFrame(animation, 1), ".G");
}

TEST(GifReader, Transparent_pixels_leave_the_canvas_as_it_is) {
    const Animation animation =
        ReadOrFail(BuildGif(Gif(3, 1, {Part("R.B", 0, 0, 1), Part(".G.", 0, 0, 1), Part("..Y", 0, 0, 1)})));
    EXPECT_EQ(ShowFrame(animation, 0), "R.B");
    EXPECT_EQ(ShowFrame(animation, 1), "RGB");
    EXPECT_EQ(ShowFrame(animation, 2), "RGY");
    EXPECT_TRUE(animation.frames[0].transparent);
    EXPECT_FALSE(animation.frames[1].transparent);
}

TEST(GifReader, The_canvas_around_a_small_first_frame_is_transparent_not_the_background_colour) {
    TestGif gif = Gif(3, 2, {Part("R", 1, 0, 0)});
    gif.backgroundIndex = 2;
    const Animation animation = ReadOrFail(BuildGif(gif));
    EXPECT_EQ(ShowFrame(animation, 0), ".R./...");
    EXPECT_TRUE(animation.hasBackground);
    EXPECT_EQ(animation.background, (RgbColor{0, 255, 0}));
}

TEST(GifReader, Images_beyond_the_canvas_are_cut) {
    const Animation animation = ReadOrFail(BuildGif(
        Gif(2, 2,
            {Part("RR/RR", 0, 0, 0), Part("GGG/GGG/GGG", 1, 1, 2), Part("B", 5, 5, 2), Part("Y", 0, 0, 0)})));
    EXPECT_EQ(ShowFrame(animation, 1), "RR/RG");
    EXPECT_EQ(ShowFrame(animation, 2), "RR/R.");
    EXPECT_EQ(ShowFrame(animation, 3), "YR/R.");
}

TEST(GifReader, Interlaced_rows_come_out_in_order) {
    for (const int height : {1, 2, 3, 4, 5, 7, 8, 9, 17}) {
        std::string picture;
        for (int y = 0; y < height; ++y) {
            if (y > 0) picture += '/';
            picture += "KRGBYMCW"[y % 8];
            picture += "KRGBYMCW"[(y / 8 + 3) % 8];
        }
        TestImage image = Part(picture, 0, 0, 0);
        image.interlaced = true;
        const Animation animation = ReadOrFail(BuildGif(Gif(2, height, {image})));
        EXPECT_EQ(ShowFrame(animation, 0), picture) << height;
    }
}

TEST(GifReader, An_image_uses_its_local_palette_for_its_pixels) {
    TestImage local = Part("YR", 0, 0, 0);
    local.localPalette = "YRB";
    TestGif gif = Gif(3, 1, {Part("GGG", 0, 0, 0), local});
    const Animation animation = ReadOrFail(BuildGif(gif));
    EXPECT_EQ(ShowFrame(animation, 1), "YRG");
    gif.hasGlobalPalette = false;
    gif.images = {local};
    const Animation withoutGlobal = ReadOrFail(BuildGif(gif));
    EXPECT_EQ(ShowFrame(withoutGlobal, 0), "YR.");
    EXPECT_FALSE(withoutGlobal.hasGlobalPalette);
    EXPECT_FALSE(withoutGlobal.frames[0].indexed);
}

TEST(GifReader, An_opaque_frame_on_the_global_palette_keeps_its_indices) {
    const Animation animation = ReadOrFail(BuildGif(Gif(4, 1, {Part("KRGB", 0, 0, 0), Part("W", 1, 0, 0)})));
    ASSERT_TRUE(animation.frames[0].indexed);
    EXPECT_EQ(animation.frames[0].indices, (Bytes{0, 1, 2, 3}));
    ASSERT_TRUE(animation.frames[1].indexed);
    EXPECT_EQ(animation.frames[1].indices, (Bytes{0, 7, 2, 3}));
    EXPECT_EQ(animation.globalPalette, test::TextPalette());
}

TEST(GifReader, Local_colours_that_the_global_palette_has_get_its_indices) {
    TestImage local = Part("BY", 0, 0, 0);
    local.localPalette = "YB";
    const Animation animation = ReadOrFail(BuildGif(Gif(3, 1, {Part("RRR", 0, 0, 0), local})));
    ASSERT_TRUE(animation.frames[1].indexed);
    EXPECT_EQ(animation.frames[1].indices, (Bytes{3, 4, 1}));
}

TEST(GifReader, A_frame_with_transparent_pixels_is_not_indexed) {
    const Animation animation = ReadOrFail(BuildGif(Gif(2, 1, {Part("R.", 0, 0, 0), Part(".G", 0, 0, 0)})));
    EXPECT_FALSE(animation.frames[0].indexed);
    EXPECT_TRUE(animation.frames[0].indices.empty());
    EXPECT_TRUE(animation.frames[1].indexed);
}

TEST(GifReader, Delays_and_places_are_those_of_the_file) {
    TestImage first = Part("RR", 0, 0, 0);
    first.delay = 7;
    TestImage second = Part("G", 1, 0, 0);
    second.delay = 65535;
    const Animation animation = ReadOrFail(BuildGif(Gif(2, 1, {first, second})));
    EXPECT_EQ(animation.frames[0].delay, 7);
    EXPECT_EQ(animation.frames[1].delay, 65535);
    EXPECT_EQ(animation.frames[1].left, 1);
    EXPECT_EQ(animation.frames[1].top, 0);
}

TEST(GifReader, The_control_extension_holds_for_one_image_only) {
    TestImage first = Part("R.", 0, 0, 2);
    first.delay = 7;
    TestImage second = Part("WW", 0, 0, 0);  // white has the index that was transparent before
    second.hasControl = false;
    const Animation animation = ReadOrFail(BuildGif(Gif(2, 1, {first, second, second})));
    EXPECT_EQ(ShowFrame(animation, 1), "WW");
    EXPECT_EQ(ShowFrame(animation, 2), "WW");
    EXPECT_EQ(animation.frames[1].delay, 0);
    EXPECT_EQ(animation.frames[1].disposal, 0);
}

TEST(GifReader, The_loop_extension_gives_the_repeats) {
    TestGif gif = Gif(1, 1, {Part("R", 0, 0, 0)});
    EXPECT_EQ(ReadOrFail(BuildGif(gif)).loopCount, kLoopNone);
    gif.loopCount = 0;
    EXPECT_EQ(ReadOrFail(BuildGif(gif)).loopCount, kLoopForever);
    gif.loopCount = 300;
    EXPECT_EQ(ReadOrFail(BuildGif(gif)).loopCount, 300);
}

// The file with the name of its loop extension, 11 characters, replaced.
Bytes WithLoopNamed(Bytes file, const std::string& name) {
    const std::string usual = "NETSCAPE2.0";
    const auto at = std::search(file.begin(), file.end(), usual.begin(), usual.end());
    EXPECT_NE(at, file.end());
    if (at != file.end()) std::copy(name.begin(), name.end(), at);
    return file;
}

TEST(GifReader, The_loop_extension_has_two_names) {
    TestGif gif = Gif(1, 1, {Part("R", 0, 0, 0)});
    gif.loopCount = 300;
    EXPECT_EQ(ReadOrFail(WithLoopNamed(BuildGif(gif), "ANIMEXTS1.0")).loopCount, 300);
    for (const char* other : {"ANIMEXTS1.1", "NETSCAPE2.1", "XMP DataXMO", "ICCRGBG1013"}) {
        const Animation animation = ReadOrFail(WithLoopNamed(BuildGif(gif), other));
        EXPECT_EQ(animation.loopCount, kLoopNone) << other;
        EXPECT_TRUE(animation.metadata.xmp.empty() && animation.metadata.colorProfile.empty()) << other;
    }
}

TEST(GifReader, Comments_are_joined_by_line_feeds) {
    TestGif gif = Gif(1, 1, {Part("R", 0, 0, 0)});
    gif.comments = {"drawn by hand", "twice"};
    EXPECT_EQ(ReadOrFail(BuildGif(gif)).comment, "drawn by hand\ntwice");
}

TEST(GifReader, A_file_without_frames_is_an_error) {
    EXPECT_EQ(ErrorOf(BuildGif(Gif(5, 5, {}))), "the GIF file has no frames");
}

}  // namespace
}  // namespace kfx
