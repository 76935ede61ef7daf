// SPDX-License-Identifier: MIT
#include "commands/plain_build.h"

#include <random>
#include <set>
#include <utility>

#include <gtest/gtest.h>

namespace kfx::commands {
namespace {

// One opaque row of `colors` different colours.
Animation ColorRow(int colors) {
    Animation animation;
    animation.width = colors;
    animation.height = 1;
    animation.frames.resize(1);
    for (int i = 0; i < colors; ++i) {
        animation.frames[0].pixels.insert(animation.frames[0].pixels.end(),
                                          {static_cast<uint8_t>(i), static_cast<uint8_t>(i >> 8), 9, 255});
    }
    return animation;
}

TEST(PlainBuild, Frames_with_indices_keep_palette_and_indices) {
    Animation source = ColorRow(3);
    source.hasGlobalPalette = true;
    source.globalPalette = {{1, 0, 9}, {0, 0, 9}, {2, 0, 9}, {7, 7, 7}};
    source.frames[0].indexed = true;
    source.frames[0].indices = {1, 0, 2};
    source.frames[0].delay = 12;
    const SourceRecord record = MakeSourceRecord(source);
    const GifAnimation gif = MakeGif(PlainBuild(&source), record);
    EXPECT_TRUE(source.frames.empty());
    ASSERT_EQ(gif.frames.size(), 1u);
    EXPECT_EQ(gif.frames[0].indices, (std::vector<uint8_t>{1, 0, 2}));
    EXPECT_EQ(gif.globalPalette.size(), 4u);
    EXPECT_EQ(gif.frames[0].delay, 12);
}

TEST(PlainBuild, True_colour_frames_keep_every_value_and_their_alpha) {
    Animation source = ColorRow(300);
    source.frames[0].pixels[4 * 7 + 3] = 100;
    source.frames[0].transparent = true;
    const std::vector<uint8_t> pixels = source.frames[0].pixels;
    const SourceRecord record = MakeSourceRecord(source);
    const Animation played = PlayBuilt(PlainBuild(&source), record);
    ASSERT_EQ(played.frames.size(), 1u);
    EXPECT_EQ(played.frames[0].pixels, pixels);
}

TEST(PlainBuild, A_frame_fits_a_palette_with_256_colours_one_of_them_for_transparency) {
    EXPECT_TRUE(FitsGifPalettes(ColorRow(256)));
    EXPECT_FALSE(FitsGifPalettes(ColorRow(257)));
    Animation clear = ColorRow(257);
    clear.frames[0].pixels[3] = 0;
    EXPECT_FALSE(FitsGifPalettes(clear));
    clear.frames[0].pixels[7] = 127;
    EXPECT_TRUE(FitsGifPalettes(clear));
    clear.frames.push_back(ColorRow(257).frames[0]);
    EXPECT_FALSE(FitsGifPalettes(clear));
}

// Frames of so many colours whose first pixels are hidden.
Animation HiddenPixels(std::initializer_list<int> hidden, int colors) {
    Animation animation = ColorRow(colors);
    const Frame frame = animation.frames[0];
    animation.frames.clear();
    for (const int count : hidden) {
        Frame& added = animation.frames.emplace_back(frame);
        for (int i = 0; i < count; ++i) added.pixels[4 * static_cast<size_t>(i) + 3] = 0;
        added.transparent = count > 0;
        added.delay = 3 + count;
    }
    animation.comment = "made by hand";
    animation.loopCount = 4;
    return animation;
}

TEST(PlainBuild, A_source_becomes_the_same_GIF_at_once_as_by_built_frames) {
    for (const int colors : {1, 5, 200, 256}) {
        Animation source = HiddenPixels({0, 1, colors / 2, 0, colors}, colors);
        const SourceRecord record = MakeSourceRecord(source);
        GifAnimation atOnce;
        ASSERT_TRUE(MakeGifOfSource(source, MakeRecordWithoutAlpha(source), JobRunner(), &atOnce));
        BuiltAnimation built;
        built.gif = atOnce;
        EXPECT_EQ(CountColors(built, {}), static_cast<size_t>(colors));
        const GifAnimation expected = MakeGif(PlainBuild(&source), record);
        EXPECT_EQ(atOnce.comment, expected.comment);
        EXPECT_EQ(atOnce.loopCount, expected.loopCount);
        ASSERT_EQ(atOnce.frames.size(), expected.frames.size());
        for (size_t i = 0; i < expected.frames.size(); ++i) {
            EXPECT_EQ(atOnce.frames[i].indices, expected.frames[i].indices) << colors << ", frame " << i;
            EXPECT_EQ(atOnce.frames[i].palette, expected.frames[i].palette);
            EXPECT_EQ(atOnce.frames[i].transparentIndex, expected.frames[i].transparentIndex);
            EXPECT_EQ(atOnce.frames[i].disposal, expected.frames[i].disposal);
            EXPECT_EQ(atOnce.frames[i].delay, expected.frames[i].delay);
        }
    }
}

TEST(PlainBuild, A_source_with_too_many_colours_becomes_no_GIF_at_once) {
    const Animation source = HiddenPixels({0, 1}, 258);
    GifAnimation gif;
    gif.comment = "as it was";
    EXPECT_FALSE(MakeGifOfSource(source, MakeRecordWithoutAlpha(source), JobRunner(), &gif));
    EXPECT_EQ(gif.comment, "as it was");
}

TEST(PlainBuild, Every_index_that_is_drawn_counts_as_a_colour) {
    for (size_t odd = 0; odd < 40; ++odd) {
        BuiltAnimation built;
        built.width = 40;
        built.height = 1;
        BuiltFrame& frame = built.frames.emplace_back();
        frame.indexed = true;
        frame.palette = {{0, 0, 0}, {1, 1, 1}, {2, 2, 2}};
        frame.pixels.assign(40, 1);
        frame.pixels[odd] = 2;
        EXPECT_EQ(CountColors(built, {}), 2u) << odd;
    }
}

// The colours of the pixels that are drawn and not fully transparent, looked at one by one.
size_t CountEveryPixel(const BuiltAnimation& built, const SourceRecord& record) {
    std::set<uint32_t> colors;
    for (const BuiltFrame& frame : built.frames) {
        const std::vector<uint8_t>& alpha = record.frames[frame.sourceIndex].alpha;
        const size_t count = frame.indexed ? frame.pixels.size() : frame.pixels.size() / 3;
        for (size_t i = 0; i < count; ++i) {
            if (!alpha.empty() && alpha[i] == 0) continue;
            const uint8_t* const pixel = frame.pixels.data() + 3 * i;
            if (frame.indexed && frame.pixels[i] == frame.transparentIndex) continue;
            const RgbColor color =
                frame.indexed ? frame.palette[frame.pixels[i]] : RgbColor{pixel[0], pixel[1], pixel[2]};
            colors.insert(static_cast<uint32_t>(color.red << 16 | color.green << 8 | color.blue));
        }
    }
    return colors.size();
}

TEST(PlainBuild, Colors_are_counted_as_pixel_by_pixel) {
    std::mt19937 random(1);
    const auto below = [&random](unsigned count) { return static_cast<size_t>(random() % count); };
    for (int round = 0; round < 300; ++round) {
        BuiltAnimation built;
        SourceRecord record;
        built.width = 5;
        built.height = 4;
        for (size_t i = 0; i < 4; ++i) {
            BuiltFrame frame;
            // Frames repeat rows of the one before, with the same palette or another, some of them hidden.
            const bool repeats = i > 0 && below(3) > 0;
            if (repeats) frame = built.frames.back();
            if (!repeats) frame.indexed = below(4) > 0;
            if (!repeats) frame.pixels.resize(frame.indexed ? 20 : 60);
            const size_t changed = repeats ? below(3) * frame.pixels.size() / 4 : frame.pixels.size();
            for (size_t k = 0; k < changed; ++k) frame.pixels[k] = static_cast<uint8_t>(below(8));
            if (frame.indexed && (frame.palette.empty() || below(4) == 0)) {
                frame.palette.clear();
                for (int k = 0; k < 8; ++k) frame.palette.push_back({static_cast<uint8_t>(below(12)), 1, 2});
            }
            if (below(3) == 0) frame.transparentIndex = static_cast<int>(below(8));
            frame.sourceIndex = i;
            built.frames.push_back(std::move(frame));
            SourceFrame& from = record.frames.emplace_back();
            if (below(3) == 0) from.alpha.resize(20);
            for (uint8_t& alpha : from.alpha) alpha = below(2) == 0 ? 0 : 255;
        }
        ASSERT_EQ(CountColors(built, record), CountEveryPixel(built, record)) << round;
    }
}

}  // namespace
}  // namespace kfx::commands
