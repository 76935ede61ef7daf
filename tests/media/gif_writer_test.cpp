// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "media/animation_writer.h"
#include "media/quantize.h"
#include "media/sample_animation.h"
#include "tests/media/gif_builder.h"
#include "tests/media/gif_decoder.h"
#include "tests/media/gif_scenes.h"
#include "tests/media/gif_text.h"

namespace kfx::test {
namespace {

std::string ErrorOf(const GifAnimation& gif) {
    Bytes file;
    std::string error;
    EXPECT_FALSE(EncodeGif(gif, &file, &error));
    EXPECT_TRUE(file.empty());
    return error;
}

TEST(GifWriter, What_was_written_is_read_back) {
    GifAnimation gif = TextGif(4, 2, {TextFrame("KRGB/YMCW"), TextFrame("WCMY/BGRK")});
    gif.frames[0].delay = 12;
    gif.frames[1].delay = 65535;
    gif.loopCount = 258;
    gif.comment = "two frames";
    const Animation animation = RoundTrip(gif);
    ASSERT_EQ(animation.frames.size(), 2u);
    EXPECT_EQ(ShowFrame(animation, 0), "KRGB/YMCW");
    EXPECT_EQ(ShowFrame(animation, 1), "WCMY/BGRK");
    EXPECT_EQ(animation.frames[0].indices, gif.frames[0].indices);
    EXPECT_EQ(animation.frames[0].delay, 12);
    EXPECT_EQ(animation.frames[1].delay, 65535);
    EXPECT_EQ(animation.loopCount, 258);
    EXPECT_EQ(animation.comment, "two frames");
    EXPECT_EQ(animation.globalPalette, test::TextPalette());
}

TEST(GifWriter, Every_loop_count_survives) {
    for (const int loopCount : {kLoopNone, kLoopForever, 1, 255, 256, 65535}) {
        GifAnimation gif = TextGif(1, 1, {TextFrame("R")});
        gif.loopCount = loopCount;
        EXPECT_EQ(RoundTrip(gif).loopCount, loopCount);
    }
}

TEST(GifWriter, Long_comments_are_divided_and_come_back_whole) {
    for (const size_t length : {1u, 254u, 255u, 256u, 510u, 1000u}) {
        GifAnimation gif = TextGif(1, 1, {TextFrame("R")});
        for (size_t i = 0; i < length; ++i) gif.comment += static_cast<char>(i * 7);
        EXPECT_EQ(RoundTrip(gif).comment, gif.comment) << length;
    }
}

TEST(GifWriter, Only_the_changed_rectangle_is_stored) {
    const Animation animation = RoundTrip(
        TextGif(5, 4, {TextFrame("RRRRR/RRRRR/RRRRR/RRRRR"), TextFrame("RRRRR/RRGRR/RRRGR/RRRRR")}));
    EXPECT_EQ(ShowFrame(animation, 1), "RRRRR/RRGRR/RRRGR/RRRRR");
    EXPECT_EQ(animation.frames[1].left, 2);
    EXPECT_EQ(animation.frames[1].top, 1);
}

TEST(GifWriter, An_unchanged_frame_is_kept_with_its_time) {
    GifAnimation gif = TextGif(3, 1, {TextFrame("RGB"), TextFrame("RGB"), TextFrame("...")});
    gif.frames[1].delay = 50;
    gif.frames[2].delay = 60;
    const Animation animation = RoundTrip(gif);
    ASSERT_EQ(animation.frames.size(), 3u);
    EXPECT_EQ(ShowFrame(animation, 1), "RGB");
    EXPECT_EQ(ShowFrame(animation, 2), "RGB");
    EXPECT_EQ(animation.frames[1].delay, 50);
    EXPECT_EQ(animation.frames[2].delay, 60);
}

TEST(GifWriter, A_frame_that_is_cleared_afterwards_keeps_all_that_there_is_to_clear) {
    // The second frame changes one pixel, but its disposal clears the red ones too.
    const Animation animation = RoundTrip(
        TextGif(4, 1, {TextFrame("RR.."), TextFrame("..G.", kDisposalBackground), TextFrame("...B")}));
    EXPECT_EQ(ShowFrame(animation, 1), "RRG.");
    EXPECT_EQ(ShowFrame(animation, 2), "...B");
}

// Some viewers clear a frame without a transparent colour to the background colour.
TEST(GifWriter, A_frame_that_is_cleared_has_a_transparent_colour) {
    const Bytes file =
        EncodeOrFail(TextGif(4, 1, {TextFrame("KRGB", kDisposalBackground), TextFrame("...Y")}));
    const Animation animation = ReadOrFail(file);
    EXPECT_EQ(ShowFrame(animation, 0), "KRGB");
    EXPECT_EQ(ShowFrame(animation, 1), "...Y");
    const Bytes control = {0x21, 0xF9, 4};
    const auto first = std::search(file.begin(), file.end(), control.begin(), control.end());
    ASSERT_GE(file.end() - first, 8);
    EXPECT_EQ(first[3], kDisposalBackground << 2 | 1);
}

TEST(GifWriter, A_frame_disposed_to_the_previous_is_cropped_to_what_it_changes) {
    const Animation animation = RoundTrip(
        TextGif(4, 1, {TextFrame("RRRR"), TextFrame("RRGR", kDisposalPrevious), TextFrame("B...")}));
    EXPECT_EQ(ShowFrame(animation, 1), "RRGR");
    EXPECT_EQ(animation.frames[1].left, 2);
    EXPECT_EQ(ShowFrame(animation, 2), "BRRR");
}

TEST(GifWriter, Random_frames_of_every_kind_look_the_same_cropped_or_not) {
    // Small pictures of few colours and many transparent pixels, so that cropping has something to do; what a
    // viewer shows is composed here from the uncropped frames.
    std::srand(1);
    for (int round = 0; round < 200; ++round) {
        const int width = 1 + std::rand() % 5;
        const int height = 1 + std::rand() % 4;
        std::vector<GifFrame> frames;
        std::vector<std::string> expected;
        std::string canvas(static_cast<size_t>(width * height), '.');
        for (int i = 0; i < 6; ++i) {
            std::string picture(canvas.size(), '.');
            for (char& letter : picture) letter = "R....GB...."[std::rand() % 11];
            const int disposal = std::rand() % 4;
            frames.push_back(TextFrame(picture, disposal));
            frames.back().transparentIndex = 8;
            const std::string before = canvas;
            for (size_t p = 0; p < canvas.size(); ++p)
                if (picture[p] != '.') canvas[p] = picture[p];
            expected.push_back(canvas);
            if (disposal == kDisposalBackground) canvas.assign(canvas.size(), '.');
            if (disposal == kDisposalPrevious) canvas = before;
        }
        const Animation animation = RoundTrip(TextGif(width, height, frames));
        for (size_t i = 0; i < expected.size(); ++i) {
            std::string shown = ShowFrame(animation, i);
            shown.erase(std::remove(shown.begin(), shown.end(), '/'), shown.end());
            ASSERT_EQ(shown, expected[i]) << "round " << round << ", frame " << i;
        }
    }
}

TEST(GifWriter, Local_palettes_of_any_size_colour_their_frames) {
    for (const size_t count : {1u, 2u, 3u, 17u, 255u, 256u}) {
        GifAnimation gif;
        gif.width = 16;
        gif.height = 16;
        GifFrame frame;
        for (size_t i = 0; i < count; ++i)
            frame.palette.push_back({static_cast<uint8_t>(i), static_cast<uint8_t>(255 - i), 77});
        for (size_t i = 0; i < 256; ++i) frame.indices.push_back(static_cast<uint8_t>(i % count));
        gif.frames = {frame};
        const Animation animation = RoundTrip(gif);
        for (size_t i = 0; i < 256; ++i) {
            const uint8_t* pixel = animation.frames[0].pixels.data() + 4 * i;
            ASSERT_EQ(pixel[0], i % count) << count;
            ASSERT_EQ(pixel[1], 255 - i % count);
            ASSERT_EQ(pixel[2], 77);
            ASSERT_EQ(pixel[3], 255);
        }
    }
}

TEST(GifWriter, Colours_that_stand_twice_in_the_palette_are_shown_alike) {
    GifAnimation gif = TextGif(4, 1, {TextFrame("KRGB")});
    gif.globalPalette = {{255, 0, 0}, {0, 255, 0}, {255, 0, 0}, {0, 255, 0}};
    EXPECT_EQ(ShowFrame(RoundTrip(gif), 0), "RGRG");
}

// Blue is in both frames and would come first by use.
TEST(GifWriter, The_given_palette_keeps_its_order_where_that_costs_nothing) {
    GifAnimation gif = TextGif(4, 1, {TextFrame("KRGB"), TextFrame("BRGB")});
    gif.globalPalette.resize(4);
    EXPECT_EQ(RoundTrip(gif).globalPalette, gif.globalPalette);
}

TEST(GifWriter, The_same_indices_show_the_colours_of_each_palette) {
    GifAnimation gif = TextGif(3, 1, {TextFrame("RGB"), TextFrame("RGB"), TextFrame("RGB")});
    gif.frames[1].palette = {{}, {0, 0, 255}, {0, 255, 0}, {255, 0, 0}};
    const Animation animation = RoundTrip(gif);
    EXPECT_EQ(ShowFrame(animation, 0), "RGB");
    EXPECT_EQ(ShowFrame(animation, 1), "BGR");
    EXPECT_EQ(ShowFrame(animation, 2), "RGB");
}

TEST(GifWriter, Large_frames_of_noise_survive) {
    GifAnimation gif;
    gif.width = 199;
    gif.height = 131;
    for (int i = 0; i < 256; ++i) gif.globalPalette.push_back({static_cast<uint8_t>(i), 0, 0});
    const Animation noise = RandomAnimation(199, 131, 2, 5, false);
    for (const Frame& source : noise.frames) {
        GifFrame frame;
        for (size_t i = 0; i < source.pixels.size(); i += 4) frame.indices.push_back(source.pixels[i]);
        gif.frames.push_back(frame);
    }
    const Animation animation = RoundTrip(gif);
    for (size_t i = 0; i < 2; ++i) EXPECT_TRUE(animation.frames[i].indices == gif.frames[i].indices);
}

TEST(GifWriter, What_the_format_cannot_hold_is_refused_with_a_reason) {
    EXPECT_EQ(ErrorOf(TextGif(1, 1, {})), "a GIF animation needs at least one frame");
    EXPECT_EQ(ErrorOf(TextGif(0, 1, {TextFrame("")})), "a GIF animation may have 1 to 65535 pixels a side");
    EXPECT_EQ(ErrorOf(TextGif(1, 0, {TextFrame("R")})), "a GIF animation may have 1 to 65535 pixels a side");
    EXPECT_EQ(ErrorOf(TextGif(65536, 1, {TextFrame("R")})),
              "a GIF animation may have 1 to 65535 pixels a side");
    EXPECT_EQ(ErrorOf(TextGif(2, 1, {TextFrame("R")})), "a GIF frame must cover the whole animation");
    GifAnimation withoutPalette = TextGif(1, 1, {TextFrame("R")});
    withoutPalette.globalPalette.clear();
    EXPECT_EQ(ErrorOf(withoutPalette), "a GIF frame needs a palette");
    GifAnimation beyond = TextGif(1, 1, {TextFrame("R")});
    beyond.frames[0].indices = {8};
    EXPECT_EQ(ErrorOf(beyond), "a GIF frame has pixels beyond its palette");
    GifAnimation large = TextGif(1, 1, {TextFrame("R")});
    large.globalPalette.resize(257);
    EXPECT_EQ(ErrorOf(large), "a GIF palette may have 256 colours at most");
}

}  // namespace
}  // namespace kfx::test
