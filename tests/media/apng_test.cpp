// SPDX-License-Identifier: MIT
#include "media/apng.h"

#include <gtest/gtest.h>

#include "media/animation_writer.h"
#include "media/gif_canvas.h"
#include "media/png_deflate.h"
#include "media/png_filter.h"
#include "tests/media/gif_builder.h"
#include "tests/media/reading.h"

namespace kfx {
namespace {

using test::Bytes;
using test::ErrorOf;
using test::RandomAnimation;
using test::ReadOrFail;

Bytes ApngOrFail(const Animation& animation) {
    Bytes file;
    std::string error;
    EXPECT_TRUE(EncodeApng(animation, &file, &error)) << error;
    return file;
}

// The compressed data of a picture of one colour.
Bytes DataOf(int width, int height, const Bytes& color) {
    Bytes rows;
    for (int y = 0; y < height; ++y) {
        rows.push_back(kFilterNone);
        for (int x = 0; x < width; ++x) rows.insert(rows.end(), color.begin(), color.end());
    }
    return Pack(rows.data(), rows.size(), kFastestPacking);
}

struct TestFrame {
    Bytes color;  // RGBA; in a file with a palette its entry
    Rectangle place;
    int disposal = kApngKeep;
    int blend = kApngReplace;
};

struct TestPalette {
    Bytes colors;
    Bytes alphas;
};

// A file of 4 x 1 pixels; `hasStill` puts a picture before the frames that is none of them.
Bytes BuildApng(const std::vector<TestFrame>& frames, bool hasStill = false,
                const TestPalette* palette = nullptr) {
    Bytes file;
    PutPngSignature(&file);
    const uint8_t colors = palette ? kPngPalette : kPngRgba;
    PutPngChunk(&file, kHeaderChunk, {0, 0, 0, 4, 0, 0, 0, 1, 8, colors, 0, 0, 0});
    if (palette) PutPngChunk(&file, kPaletteChunk, palette->colors);
    if (palette) PutPngChunk(&file, kTransparencyChunk, palette->alphas);
    PutPngChunk(&file, kAnimationChunk, {0, 0, 0, static_cast<uint8_t>(frames.size()), 0, 0, 0, 3});
    if (hasStill) PutPngChunk(&file, kDataChunk, DataOf(4, 1, {1, 1, 1, 255}));
    uint32_t sequence = 0;
    for (const TestFrame& frame : frames) {
        Bytes control;
        PutBigWord32(&control, sequence++);
        for (const int value : {frame.place.width, frame.place.height, frame.place.left, frame.place.top})
            PutBigWord32(&control, static_cast<uint32_t>(value));
        control.insert(control.end(), {0, 1, 0, 30, static_cast<uint8_t>(frame.disposal),
                                       static_cast<uint8_t>(frame.blend)});
        PutPngChunk(&file, kFrameControlChunk, control);
        const Bytes pixels = DataOf(frame.place.width, frame.place.height, frame.color);
        Bytes data;
        const bool isFirst = sequence == 1 && !hasStill;
        if (!isFirst) PutBigWord32(&data, sequence++);
        data.insert(data.end(), pixels.begin(), pixels.end());
        PutPngChunk(&file, isFirst ? kDataChunk : kFrameDataChunk, data);
    }
    PutPngChunk(&file, kEndChunk, {});
    return file;
}

const Bytes kRed = {255, 0, 0, 255};
const Bytes kGreen = {0, 255, 0, 255};
const Bytes kHalfBlue = {0, 0, 255, 128};
const Bytes kNothing = {0, 0, 0, 0};
constexpr Rectangle kAll = {.left = 0, .top = 0, .width = 4, .height = 1};
constexpr Rectangle kMiddle = {.left = 1, .top = 0, .width = 2, .height = 1};

Bytes Row(const std::vector<Bytes>& pixels) {
    Bytes row;
    for (const Bytes& pixel : pixels) row.insert(row.end(), pixel.begin(), pixel.end());
    return row;
}

TEST(Apng, Written_frames_times_and_loops_are_read_back) {
    for (const bool transparent : {false, true}) {
        Animation source = RandomAnimation(21, 17, 4, 31, transparent);
        source.frames[2] = source.frames[1];
        for (size_t i = 0; i < 20; ++i) source.frames[3].pixels[4 * i + 3] = transparent ? 77 : 255;
        const int times[] = {33, 0, 65535, 100000};
        for (size_t i = 0; i < 4; ++i) source.frames[i].milliseconds = times[i];
        for (const int loopCount : {kLoopForever, kLoopNone, 1, 1000000}) {
            source.loopCount = loopCount;
            const Animation animation = ReadOrFail(ApngOrFail(source));
            EXPECT_EQ(animation.warning, "");
            EXPECT_EQ(animation.loopCount, loopCount);
            ASSERT_EQ(animation.frames.size(), 4u);
            for (size_t i = 0; i < 4; ++i) {
                EXPECT_TRUE(animation.frames[i].pixels == source.frames[i].pixels) << i;
                EXPECT_EQ(animation.frames[i].milliseconds, times[i]);
            }
            EXPECT_EQ(animation.frames[3].delay, 10000);
        }
    }
}

TEST(Apng, Only_what_changes_is_stored) {
    Animation source = RandomAnimation(60, 50, 1, 8, false);
    source.frames.push_back(source.frames[0]);
    source.frames[1].pixels[4 * (10 * 60 + 20)] ^= 1;
    const size_t one = [&] {
        Animation still = source;
        still.frames.resize(1);
        return ApngOrFail(still).size();
    }();
    const Bytes file = ApngOrFail(source);
    EXPECT_LT(file.size(), one + 100);
    EXPECT_EQ(ReadOrFail(file).frames[1].left, 20);
    EXPECT_EQ(ReadOrFail(file).frames[1].top, 10);
}

TEST(Apng, Disposal_and_blending_are_those_of_the_format) {
    const Animation animation = ReadOrFail(BuildApng({
        {.color = kRed, .place = kAll},
        {.color = kGreen, .place = kMiddle, .disposal = kApngPrevious},
        {.color = kHalfBlue, .place = kMiddle, .disposal = kApngBackground, .blend = kApngOver},
        {.color = kHalfBlue, .place = kAll, .blend = kApngOver},
        {.color = kNothing, .place = kMiddle},
    }));
    EXPECT_EQ(animation.loopCount, 2);
    ASSERT_EQ(animation.frames.size(), 5u);
    const Bytes mixed = {127, 0, 128, 255};
    EXPECT_EQ(animation.frames[0].pixels, Row({kRed, kRed, kRed, kRed}));
    EXPECT_EQ(animation.frames[1].pixels, Row({kRed, kGreen, kGreen, kRed}));
    EXPECT_EQ(animation.frames[2].pixels, Row({kRed, mixed, mixed, kRed}));
    EXPECT_EQ(animation.frames[3].pixels, Row({mixed, kHalfBlue, kHalfBlue, mixed}));
    EXPECT_EQ(animation.frames[4].pixels, Row({mixed, kNothing, kNothing, mixed}));
    EXPECT_EQ(animation.frames[1].milliseconds, 33);
    EXPECT_EQ(animation.frames[0].delay + animation.frames[1].delay + animation.frames[2].delay, 10);
}

TEST(Apng, Opaque_frames_keep_the_entries_of_the_file_s_palette) {
    const TestPalette palette = {.colors = {255, 0, 0, 0, 255, 0, 255, 0, 0, 0, 0, 255, 9, 9, 9, 127, 0, 128},
                                 .alphas = {255, 255, 255, 128, 0}};
    const Bytes red = {0}, green = {1}, secondRed = {2}, halfBlue = {3}, nothing = {4}, beyond = {6};
    const Animation animation = ReadOrFail(BuildApng(
        {
            {.color = secondRed, .place = kAll},
            {.color = green, .place = kMiddle, .disposal = kApngPrevious},
            {.color = nothing, .place = kAll, .blend = kApngOver},
            {.color = halfBlue, .place = kMiddle, .blend = kApngOver},
            {.color = nothing, .place = kMiddle},
            {.color = red, .place = kAll, .disposal = kApngBackground},
            {.color = green, .place = kMiddle},
            {.color = beyond, .place = kAll},
        },
        false, &palette));
    ASSERT_TRUE(animation.hasGlobalPalette);
    ASSERT_EQ(animation.globalPalette.size(), 6u);
    EXPECT_EQ(animation.globalPalette[5], (RgbColor{127, 0, 128}));
    const std::vector<Bytes> expected = {{2, 2, 2, 2}, {2, 1, 1, 2}, {2, 2, 2, 2}, {2, 5, 5, 2},
                                         {},           {0, 0, 0, 0}, {},           {}};
    ASSERT_EQ(animation.frames.size(), expected.size());
    for (size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(animation.frames[i].indices, expected[i]) << i;
        EXPECT_EQ(animation.frames[i].indexed, !expected[i].empty()) << i;
    }
    EXPECT_EQ(animation.frames[7].pixels,
              Row({{0, 0, 0, 255}, {0, 0, 0, 255}, {0, 0, 0, 255}, {0, 0, 0, 255}}));
}

// So many that some of them share their place in the reader's cache.
TEST(Apng, Every_blended_color_gets_its_own_palette_entry) {
    constexpr int kBases = 150, kMixes = 100;
    const auto mixed = [](int base, int blue) {
        return static_cast<uint8_t>((base * 127 + blue * 128 + 127) / 255);
    };
    TestPalette palette;
    const auto channel = [](int i, int factor) { return i * factor % 256; };
    for (int i = 0; i < kBases; ++i) {
        for (const int factor : {1, 7, 13})
            palette.colors.push_back(static_cast<uint8_t>(channel(i, factor)));
    }
    for (int i = 0; i < kMixes; ++i) {
        palette.colors.insert(palette.colors.end(),
                              {mixed(channel(i, 1), 0), mixed(channel(i, 7), 0), mixed(channel(i, 13), 255)});
    }
    palette.colors.insert(palette.colors.end(), {0, 0, 255});
    palette.alphas.assign(kBases + kMixes, 255);
    palette.alphas.push_back(128);
    std::vector<TestFrame> frames;
    for (int i = 0; i < 2 * kBases; ++i) {
        frames.push_back({.color = {static_cast<uint8_t>(i % kBases)}, .place = kAll});
        frames.push_back({.color = {kBases + kMixes}, .place = kMiddle, .blend = kApngOver});
    }
    const Animation animation = ReadOrFail(BuildApng(frames, false, &palette));
    ASSERT_EQ(animation.frames.size(), frames.size());
    for (int i = 0; i < 2 * kBases; ++i) {
        const Frame& frame = animation.frames[2 * static_cast<size_t>(i) + 1];
        const RgbColor color = {frame.pixels[4], frame.pixels[5], frame.pixels[6]};
        const int16_t entry = FindPaletteEntry(animation.globalPalette, color);
        ASSERT_TRUE(i % kBases >= kMixes || entry >= 0) << i;
        ASSERT_EQ(frame.indexed, entry >= 0) << i;
        if (!frame.indexed) continue;
        ASSERT_EQ(frame.indices[1], entry) << i;
    }
}

// A channel's highest bit and its neighbour's lowest are the likeliest to be taken for each other.
TEST(Apng, Blended_colors_that_differ_in_neighbouring_channels_are_told_apart) {
    const TestPalette palette = {
        .colors = {128, 0, 0, 0, 1, 0, 0, 128, 0, 0, 0, 1, 128, 0, 0, 0, 1, 0, 0, 128, 0, 0, 0, 1},
        .alphas = {255, 255, 255, 255, 128, 128, 128, 128}};
    std::vector<TestFrame> frames;
    for (uint8_t color = 0; color < 4; ++color) {
        const auto half = static_cast<uint8_t>(color + 4);
        frames.push_back({.color = {color}, .place = kAll});
        frames.push_back({.color = {half}, .place = kMiddle, .blend = kApngOver});
    }
    const Animation animation = ReadOrFail(BuildApng(frames, false, &palette));
    ASSERT_EQ(animation.frames.size(), frames.size());
    for (size_t i = 0; i < frames.size(); ++i)
        EXPECT_EQ(animation.frames[i].indices, Bytes(4, static_cast<uint8_t>(i / 2))) << i;
}

TEST(Apng, A_second_palette_behind_a_frame_is_damage) {
    const TestPalette palette = {.colors = {255, 0, 0, 0, 255, 0}, .alphas = {255}};
    Bytes file = BuildApng({{.color = {1}, .place = kAll}, {.color = {0}, .place = kAll}}, false, &palette);
    Bytes chunk;
    PutPngChunk(&chunk, kPaletteChunk, {1, 2, 3});
    const size_t endSize = 12;
    file.insert(file.end() - endSize, chunk.begin(), chunk.end());
    const Animation animation = ReadOrFail(file);
    EXPECT_EQ(animation.frames.size(), 1u);
    EXPECT_NE(animation.warning, "");
}

TEST(Apng, A_still_picture_without_control_is_no_frame) {
    const Animation animation =
        ReadOrFail(BuildApng({{.color = kRed, .place = kAll}, {.color = kGreen, .place = kAll}}, true));
    ASSERT_EQ(animation.frames.size(), 2u);
    EXPECT_EQ(animation.frames[0].pixels, Row({kRed, kRed, kRed, kRed}));
}

TEST(Apng, Damage_and_cuts_leave_the_complete_frames_and_a_warning) {
    const Bytes whole = BuildApng({{.color = kRed, .place = kAll},
                                   {.color = kGreen, .place = kAll},
                                   {.color = kRed, .place = kMiddle}});
    size_t read = 0;
    for (size_t size = 0; size < whole.size(); ++size) {
        const Bytes cut(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(size));
        Animation animation;
        std::string error;
        if (!ReadAnimationFromMemory(cut.data(), cut.size(), &animation, &error)) {
            EXPECT_NE(error, "");
            continue;
        }
        EXPECT_GE(animation.frames.size(), read);
        read = animation.frames.size();
        EXPECT_EQ(animation.frames[0].pixels, Row({kRed, kRed, kRed, kRed}));
    }
    EXPECT_EQ(read, 3u);
    for (size_t at = kPngSignatureSize + 40; at < whole.size(); ++at) {
        Bytes changed = whole;
        changed[at] ^= 0x55;
        Animation animation;
        std::string error;
        if (ReadAnimationFromMemory(changed.data(), changed.size(), &animation, &error))
            EXPECT_LE(animation.frames.size(), 3u);
        else
            EXPECT_NE(error, "");
    }
}

TEST(Apng, A_frame_beyond_the_canvas_is_damage) {
    const Rectangle beyond = {.left = 3, .top = 0, .width = 2, .height = 1};
    const Animation animation =
        ReadOrFail(BuildApng({{.color = kRed, .place = kAll}, {.color = kRed, .place = beyond}}));
    EXPECT_EQ(animation.frames.size(), 1u);
    EXPECT_EQ(animation.warning, DamageWarning(1));
    EXPECT_EQ(ErrorOf(BuildApng({{.color = kRed, .place = beyond}})),
              "the PNG file is damaged before the end of its first frame");
}

TEST(Apng, The_budget_counts_all_frames_before_the_first_is_decoded) {
    ReadLimits limits;
    limits.maxPixels = 11;
    const std::vector<TestFrame> frames(3, {.color = kRed, .place = kAll});
    EXPECT_EQ(ErrorOf(BuildApng(frames), limits),
              "the 3 frames of 4 x 1 together have 12 pixels; the limit is 11");
    limits.maxPixels = 12;
    Animation animation;
    std::string error;
    const Bytes file = BuildApng(frames);
    EXPECT_TRUE(ReadAnimationFromMemory(file.data(), file.size(), &animation, &error, limits)) << error;
}

TEST(Apng, What_the_format_cannot_hold_is_refused_with_a_reason) {
    Animation source = RandomAnimation(4, 4, 1, 17, false);
    Bytes file;
    std::string error;
    source.width = 5;
    EXPECT_FALSE(EncodeApng(source, &file, &error));
    EXPECT_EQ(error, "a PNG frame must cover the whole animation");
    source.frames.clear();
    EXPECT_FALSE(EncodeApng(source, &file, &error));
    EXPECT_EQ(error, "a PNG animation needs at least one frame");
}

}  // namespace
}  // namespace kfx
