// SPDX-License-Identifier: MIT
// GIF files as they occur: against the format's rules, but shown by viewers; and files that are refused at
// once.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "media/animation.h"
#include "media/readers.h"
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

constexpr char kCutInside[] =
    "the file is damaged or cut inside its first frame; only the part that is there is shown";
constexpr char kOnlyFirst[] = "the file is damaged or cut after its first frame; only that frame is used";

// An image of this size without a pixel in its data.
TestImage Empty(int width, int height, bool hasData, int disposal = 0) {
    TestImage image = Part("", 0, 0, disposal);
    image.width = width;
    image.height = height;
    image.hasData = hasData;
    image.delay = 25;
    return image;
}

Bytes Cut(const Bytes& file, size_t length) {
    return {file.begin(), file.begin() + static_cast<ptrdiff_t>(length)};
}

TEST(GifAsFound, Images_without_width_height_or_data_show_the_canvas_as_it_is) {
    struct Size {
        int width;
        int height;
    };
    for (const Size size : {Size{0, 0}, Size{0, 2}, Size{2, 0}, Size{2, 2}}) {
        for (const bool hasData : {false, true}) {
            const Animation animation = ReadOrFail(
                BuildGif(Gif(3, 1, {Part("RGB"), Empty(size.width, size.height, hasData), Part("Y", 1)})));
            ASSERT_EQ(animation.frames.size(), 3u) << size.width << " x " << size.height;
            EXPECT_EQ(ShowFrame(animation, 1), "RGB");
            EXPECT_EQ(animation.frames[1].delay, 25);
            EXPECT_TRUE(animation.frames[1].indexed);
            EXPECT_EQ(ShowFrame(animation, 2), "RYB");
            EXPECT_EQ(animation.warning, "");
        }
    }
}

TEST(GifAsFound, An_empty_step_of_the_beginning_shows_an_empty_canvas) {
    const Animation animation = ReadOrFail(BuildGif(Gif(2, 1, {Empty(2, 1, false), Part("RG")})));
    ASSERT_EQ(animation.frames.size(), 2u);
    EXPECT_EQ(ShowFrame(animation, 0), "..");
    EXPECT_EQ(ShowFrame(animation, 1), "RG");
}

TEST(GifAsFound, An_empty_step_disposes_of_its_place_like_any_image) {
    const Animation animation = ReadOrFail(BuildGif(
        Gif(2, 1, {Part("RG"), Empty(1, 1, true, 2), Part("", 0, 0, 0), Empty(0, 0, true, 3), Part("B")})));
    EXPECT_EQ(ShowFrame(animation, 1), "RG");
    EXPECT_EQ(ShowFrame(animation, 2), ".G");
    EXPECT_EQ(ShowFrame(animation, 3), ".G");
    EXPECT_EQ(ShowFrame(animation, 4), "BG");
}

TEST(GifAsFound, Pixels_that_are_missing_are_damage_not_an_empty_step) {
    TestImage two = Part("YY");
    two.width = 3;
    const Animation animation = ReadOrFail(BuildGif(Gif(3, 1, {Part("RGB"), two, Part("W")})));
    EXPECT_EQ(animation.frames.size(), 1u);
    EXPECT_EQ(animation.warning, kOnlyFirst);
}

TEST(GifAsFound, Control_data_hold_for_an_empty_step_only) {
    TestImage plain = Part("W.");
    plain.hasControl = false;
    const Animation animation = ReadOrFail(BuildGif(Gif(2, 1, {Part("R."), Empty(0, 0, true), plain})));
    EXPECT_EQ(ShowFrame(animation, 2), "WW");
    EXPECT_EQ(animation.frames[2].delay, 0);
}

TEST(GifAsFound, A_first_image_beyond_the_screen_enlarges_the_canvas) {
    const Animation animation =
        ReadOrFail(BuildGif(Gif(2, 2, {Part("RGB/YMC", 1, 1), Part("WWWW/WWWW/WWWW/WWWW", 2, 2)})));
    EXPECT_EQ(animation.width, 4);
    EXPECT_EQ(animation.height, 3);
    EXPECT_EQ(ShowFrame(animation, 0), "..../.RGB/.YMC");
    EXPECT_EQ(ShowFrame(animation, 1), "..../.RGB/.YWW");
    const Animation smaller = ReadOrFail(BuildGif(Gif(3, 2, {Part("R", 1, 1), Part("GGGG")})));
    EXPECT_EQ(smaller.width, 3);
    EXPECT_EQ(ShowFrame(smaller, 1), "GGG/.R.");
}

TEST(GifAsFound, A_screen_without_size_takes_that_of_the_first_image_that_has_one) {
    const Animation animation = ReadOrFail(BuildGif(Gif(0, 0, {Part("RG/BY")})));
    EXPECT_EQ(animation.width, 2);
    EXPECT_EQ(animation.height, 2);
    EXPECT_EQ(ShowFrame(animation, 0), "RG/BY");
    const Animation second = ReadOrFail(BuildGif(Gif(0, 0, {Empty(0, 0, false), Part("RG"), Part("BBB")})));
    ASSERT_EQ(second.frames.size(), 3u);
    EXPECT_EQ(ShowFrame(second, 0), "..");
    EXPECT_EQ(ShowFrame(second, 1), "RG");
    EXPECT_EQ(ShowFrame(second, 2), "BB");
    EXPECT_EQ(ErrorOf(BuildGif(Gif(0, 0, {Empty(0, 0, false)}))), "the GIF file has no frames");
}

TEST(GifAsFound, Without_any_palette_all_pixels_are_black) {
    TestGif gif = Gif(3, 1, {Part("R.B")});
    gif.hasGlobalPalette = false;
    const Animation animation = ReadOrFail(BuildGif(gif));
    EXPECT_EQ(ShowFrame(animation, 0), "K.K");
    EXPECT_FALSE(animation.hasGlobalPalette);
    EXPECT_FALSE(animation.frames[0].indexed);
    EXPECT_EQ(animation.warning, "");
}

TEST(GifAsFound, A_missing_trailer_is_no_damage) {
    TestGif gif = Gif(3, 1, {Part("RGB"), Part("YYY")});
    gif.hasTrailer = false;
    const Animation animation = ReadOrFail(BuildGif(gif));
    EXPECT_EQ(animation.frames.size(), 2u);
    EXPECT_EQ(animation.warning, "");
}

TEST(GifAsFound, A_cut_file_gives_its_complete_frames_and_a_warning) {
    const Bytes file = BuildGif(Gif(3, 1, {Part("RGB"), Part("YYY"), Part("W")}));
    const Bytes first = BuildGif(Gif(3, 1, {Part("RGB")}));
    const Bytes two = BuildGif(Gif(3, 1, {Part("RGB"), Part("YYY")}));
    for (size_t length = first.size() - 1; length < file.size() - 1; ++length) {
        const Animation animation = ReadOrFail(Cut(file, length));
        constexpr size_t kControl = 8;  // bytes of the control data before each image
        const bool whole = length == first.size() - 1 || length == first.size() - 1 + kControl ||
                           length == two.size() - 1 || length == two.size() - 1 + kControl;
        ASSERT_EQ(animation.warning.empty(), whole) << length;
        ASSERT_EQ(ShowFrame(animation, 0), "RGB") << length;
        if (animation.frames.size() > 1) {
            ASSERT_EQ(ShowFrame(animation, 1), "YYY") << length;
        }
        if (length >= two.size() - 1) {
            ASSERT_GE(animation.frames.size(), 2u) << length;
        }
        if (animation.frames.size() > 2) {
            ASSERT_EQ(ShowFrame(animation, 2), "WYY") << length;
        }
    }
    EXPECT_EQ(ReadOrFail(Cut(file, two.size() + 2)).warning,
              "the file is damaged or cut after 2 frames; only the frames up to there are used");
    EXPECT_EQ(ReadOrFail(file).warning, "");
}

TEST(GifAsFound, A_cut_only_frame_shows_the_part_that_is_there) {
    const std::string picture = "RGBYMCWK/KWCMYBGR/RRGGBBYY/WKWKWKWK";
    for (const bool interlaced : {false, true}) {
        TestImage image = Part(picture);
        image.interlaced = interlaced;
        const Bytes file = BuildGif(Gif(8, 4, {image}));
        const size_t data =
            13 + 24 + 8 + 10 + 2;  // screen, palette, graphics control, descriptor, code size, length
        size_t shown = 0;
        for (size_t length = data - 2; length < file.size() - 2; ++length) {
            Animation animation;
            std::string error;
            const Bytes cut = Cut(file, length);
            if (!ReadAnimationFromMemory(cut.data(), cut.size(), &animation, &error)) {
                EXPECT_EQ(error, "the GIF file is damaged before the end of its first frame");
                EXPECT_LE(length, data) << "a byte has two codes, the first of which clears";
                continue;
            }
            ASSERT_EQ(animation.frames.size(), 1u);
            const std::string part = ShowFrame(animation, 0);
            const auto there = static_cast<size_t>(
                std::count_if(part.begin(), part.end(), [](char c) { return c != '.' && c != '/'; }));
            // Two codes of four bits to a byte, and every fifth code clears.
            const size_t codes = 2 * (length - data);
            EXPECT_EQ(there, std::min<size_t>(codes - (codes + 4) / 5, 32)) << length;
            for (size_t i = 0; i < part.size(); ++i)
                ASSERT_TRUE(part[i] == picture[i] || part[i] == '.') << part;
            if (!interlaced) {
                EXPECT_EQ(part.find_first_not_of("./", part.find('.')), std::string::npos) << part;
            }
            EXPECT_EQ(animation.warning, there == 32 ? kOnlyFirst : kCutInside) << length;
            shown = std::max(shown, there);
        }
        EXPECT_EQ(shown, 32u);
    }
}

TEST(GifAsFound, Damage_inside_the_first_frame_shows_the_part_before_it) {
    Bytes file = BuildGif(Gif(4, 3, {Part("RGBY/MCWK/RGBY"), Part("WWWW/WWWW/WWWW")}));
    const size_t data = 13 + 24 + 8 + 10 + 2;
    // Clear, red, green, blue, yellow; clear, magenta, cyan; then the end code.
    file[data + 3] = static_cast<uint8_t>((file[data + 3] & 0x0F) | 0x90);
    file[data + 4] = 0x99;
    const Animation animation = ReadOrFail(file);
    ASSERT_EQ(animation.frames.size(), 1u);
    EXPECT_EQ(ShowFrame(animation, 0), "RGBY/M.../....");
    EXPECT_EQ(animation.warning, kCutInside);
}

TEST(GifAsFound, Sides_up_to_the_format_s_largest_are_read) {
    std::string row;
    for (int i = 0; i < 65535; ++i) row += "KRGBYMCW"[i % 7];
    const Animation wide = ReadOrFail(BuildGif(Gif(65535, 1, {Part(row)})));
    EXPECT_EQ(wide.width, 65535);
    EXPECT_EQ(ShowFrame(wide, 0), row);
    TestImage tall = Part("");
    tall.height = 65535;
    tall.width = 1;
    for (int i = 0; i < 65535; ++i) tall.picture += std::string(i > 0 ? "/" : "") + "KRGBYMCW"[i % 5];
    const Animation animation = ReadOrFail(BuildGif(Gif(1, 1, {tall})));
    EXPECT_EQ(animation.height, 65535);
    EXPECT_EQ(ShowFrame(animation, 0), tall.picture);
}

TEST(GifAsFound, Absurd_sizes_are_refused_before_anything_is_allocated) {
    // 65535 x 65535 pixels would be 16 GiB: reading them at all would take far longer than a test may.
    const Bytes file = BuildGif(Gif(65535, 65535, {Part("R")}));
    ReadLimits limits;
    limits.raisedBy = "--more";
    EXPECT_EQ(
        ErrorOf(file, limits),
        "the picture of 65535 x 65535 has 4294836225 pixels; the limit is 536870912 (--more 4295 raises it)");
    limits.raisedUpTo = 4295;
    EXPECT_EQ(
        ErrorOf(file, limits),
        "the picture of 65535 x 65535 has 4294836225 pixels; the limit is 536870912 (--more 4295 raises it)");
    limits.raisedUpTo = 4294;
    EXPECT_EQ(
        ErrorOf(file, limits),
        "the picture of 65535 x 65535 has 4294836225 pixels; the limit is 536870912 (--more raises it to "
        "4294 million at most, which is still too few)");
    limits.maxSide = 10000;
    EXPECT_EQ(ErrorOf(file, limits),
              "the picture of 65535 x 65535 pixels is too large: a side may have 10000");
}

TEST(GifAsFound, The_budget_counts_all_frames_together) {
    const Bytes file = BuildGif(Gif(1000, 1000, {Part("R"), Part("R"), Empty(0, 0, false)}));
    ReadLimits limits;
    limits.maxPixels = 3000000;
    Animation animation;
    std::string error;
    EXPECT_TRUE(ReadAnimationFromMemory(file.data(), file.size(), &animation, &error, limits)) << error;
    limits.maxPixels = 2999999;
    EXPECT_EQ(ErrorOf(file, limits),
              "the 3 frames of 1000 x 1000 together have 3000000 pixels; the limit is 2999999");
    limits.raisedBy = "--more";
    EXPECT_EQ(ErrorOf(file, limits),
              "the 3 frames of 1000 x 1000 together have 3000000 pixels; the limit is 2999999 (--more 3 "
              "raises it)");
}

TEST(GifAsFound, The_budget_counts_as_far_as_numbers_go) {
    PixelBudget budget;
    std::string error;
    EXPECT_FALSE(SpendFrames(&budget, 2, 1, UINT64_MAX / 2, &error));
    EXPECT_THAT(error, ::testing::HasSubstr(" 18446744073709551614 pixels"));
    EXPECT_FALSE(SpendFrames(&budget, 2, 1, UINT64_MAX / 2 + 1, &error));
    EXPECT_THAT(error, ::testing::HasSubstr(" 18446744073709551615 pixels"));
    EXPECT_EQ(budget.spent, 0u);
}

TEST(GifAsFound, Too_many_frames_are_refused_before_the_first_is_decoded) {
    Bytes file = BuildGif(Gif(1000, 1000, {Part("R"), Part("R"), Part("R")}));
    const size_t codeSize = 13 + 24 + 8 + 10;  // screen, palette, graphics control, descriptor
    ASSERT_EQ(file[codeSize], 3);
    file[codeSize] = 99;  // whoever decodes the first frame finds this
    ReadLimits limits;
    limits.maxPixels = 2999999;
    EXPECT_EQ(ErrorOf(file, limits),
              "the 3 frames of 1000 x 1000 together have 3000000 pixels; the limit is 2999999");
    limits.maxPixels = 3000000;
    EXPECT_EQ(ErrorOf(file, limits), "the GIF file is damaged before the end of its first frame");
}

TEST(GifAsFound, Images_far_larger_than_their_canvas_count_in_the_budget) {
    TestImage large = Part("G");
    large.width = 16191;
    large.height = 16191;
    const Bytes file = BuildGif(Gif(2, 2, {Part("RR/RR"), large}));
    ReadLimits limits;
    limits.maxPixels = 1000000;
    EXPECT_EQ(ErrorOf(file, limits),
              "the pictures together have at least 262148489 pixels; the limit is 1000000");
}

TEST(GifAsFound, All_pixels_of_images_larger_than_their_canvas_count_and_those_of_others_do_not) {
    const Bytes file = BuildGif(Gif(2, 2, {Part("RR/RR"), Part("GGG/GGG"), Part("BBBBB")}));
    ReadLimits limits;
    limits.maxPixels = 3 * 4 + 6 + 5;
    Animation animation;
    std::string error;
    EXPECT_TRUE(ReadAnimationFromMemory(file.data(), file.size(), &animation, &error, limits)) << error;
    limits.maxPixels -= 1;
    EXPECT_EQ(ErrorOf(file, limits), "the pictures together have at least 23 pixels; the limit is 22");
}

}  // namespace
}  // namespace kfx
