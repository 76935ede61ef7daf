// SPDX-License-Identifier: MIT
// Formats that the PNG writers choose, and what other decoders and this project's reader make of the files.
#include <gtest/gtest.h>
#include <lodepng.h>

#include <cstdlib>
#include <random>

#include "media/animation_writer.h"
#include "media/apng.h"
#include "media/png_compress.h"
#include "media/sample_animation.h"
#include "tests/media/gif_builder.h"
#include "tests/media/gif_scenes.h"
#include "tests/media/reading.h"

namespace kfx {
namespace {

using test::Bytes;

Animation ReadOrFail(const Bytes& file) {
    Animation animation = test::ReadWhole(file);
    if (animation.frames.empty()) animation.frames.emplace_back();
    return animation;
}

PngFormat FormatOf(const Bytes& file) {
    PngHeader header;
    EXPECT_TRUE(ReadPngHeader(file.data(), file.size(), &header));
    size_t at = kPngSignatureSize;
    PngChunk chunk;
    while (NextPngChunk(file.data(), file.size(), &at, &chunk))
        EXPECT_TRUE(TakeFormatChunk(chunk, &header.format));
    return header.format;
}

// The format of a picture of 64 x 50 pixels with these colours in a random order, which both decoders have to
// show exactly.
PngFormat FormatFor(const std::vector<Bytes>& colors) {
    constexpr int kWidth = 64;
    constexpr int kHeight = 50;
    std::mt19937 random(4);
    Bytes pixels;
    for (size_t i = 0; i < size_t{kWidth} * kHeight; ++i) {
        const Bytes& color = colors[i < colors.size() ? i : random() % colors.size()];
        pixels.insert(pixels.end(), color.begin(), color.end());
    }
    Bytes file;
    std::string error;
    EXPECT_TRUE(EncodePng(kWidth, kHeight, pixels.data(), &file, &error)) << error;
    EXPECT_TRUE(ReadOrFail(file).frames[0].pixels == pixels);
    unsigned char* decoded = nullptr;
    unsigned width = 0;
    unsigned height = 0;
    EXPECT_EQ(lodepng_decode32(&decoded, &width, &height, file.data(), file.size()), 0u);
    EXPECT_TRUE(decoded && Bytes(decoded, decoded + pixels.size()) == pixels);
    std::free(decoded);
    return FormatOf(file);
}

Bytes Grey(int value, int alpha = 255) {
    return {static_cast<uint8_t>(value), static_cast<uint8_t>(value), static_cast<uint8_t>(value),
            static_cast<uint8_t>(alpha)};
}

std::vector<Bytes> Colors(int count, bool isGrey = false) {
    std::vector<Bytes> colors;
    colors.reserve(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i)
        colors.push_back(isGrey ? Grey(i)
                                : Bytes{static_cast<uint8_t>(i), static_cast<uint8_t>(i / 256 + 3),
                                        static_cast<uint8_t>(7 * i), 255});
    return colors;
}

void ExpectFormat(const PngFormat& format, PngColors colors, int depth, size_t palette, size_t alphas,
                  bool hasKey) {
    EXPECT_EQ(format.colors, colors);
    EXPECT_EQ(format.depth, depth);
    EXPECT_EQ(format.palette.size(), palette);
    EXPECT_EQ(format.alphas.size(), alphas);
    EXPECT_EQ(format.hasKey, hasKey);
}

TEST(PngFormats, Few_colours_have_a_palette_and_few_bits) {
    ExpectFormat(FormatFor(Colors(2)), kPngPalette, 1, 2, 0, false);
    ExpectFormat(FormatFor(Colors(4)), kPngPalette, 2, 4, 0, false);
    ExpectFormat(FormatFor(Colors(16)), kPngPalette, 4, 16, 0, false);
    ExpectFormat(FormatFor(Colors(17)), kPngPalette, 8, 17, 0, false);
    ExpectFormat(FormatFor(Colors(256)), kPngPalette, 8, 256, 0, false);
    ExpectFormat(FormatFor(Colors(257)), kPngRgb, 8, 0, 0, false);
}

TEST(PngFormats, Grey_tones_need_no_palette) {
    ExpectFormat(FormatFor({Grey(0), Grey(255)}), kPngGrey, 1, 0, 0, false);
    ExpectFormat(FormatFor({Grey(85), Grey(255)}), kPngGrey, 2, 0, 0, false);
    ExpectFormat(FormatFor({Grey(0), Grey(17), Grey(51), Grey(255)}), kPngGrey, 4, 0, 0, false);
    ExpectFormat(FormatFor(Colors(256, true)), kPngGrey, 8, 0, 0, false);
}

TEST(PngFormats, Transparency_takes_what_it_needs) {
    // Entries that are not opaque come first, so that the others need no alpha.
    std::vector<Bytes> few = Colors(10);
    few.push_back({1, 2, 3, 0});
    few.push_back({1, 2, 3, 99});
    ExpectFormat(FormatFor(few), kPngPalette, 4, 12, 2, false);
    // One transparent colour that no opaque pixel has.
    std::vector<Bytes> many = Colors(600);
    many.push_back({9, 9, 9, 0});
    ExpectFormat(FormatFor(many), kPngRgb, 8, 0, 0, true);
    many.push_back({9, 9, 8, 0});
    ExpectFormat(FormatFor(many), kPngRgba, 8, 0, 0, false);
    std::vector<Bytes> grey = Colors(256, true);
    for (int i = 0; i < 50; ++i) grey.push_back(Grey(i, 100));
    ExpectFormat(FormatFor(grey), kPngGreyAlpha, 8, 0, 0, false);
}

TEST(PngFormats, A_colour_profile_of_colours_allows_no_grey) {
    Animation notes;
    notes.metadata.colorProfile = Bytes(200);
    const std::string space = "RGB ";
    std::copy(space.begin(), space.end(), notes.metadata.colorProfile.begin() + 16);
    const Bytes pixels = {0, 0, 0, 255, 255, 255, 255, 255};
    Bytes file;
    std::string error;
    ASSERT_TRUE(EncodePng(2, 1, pixels.data(), &file, &error, notes)) << error;
    EXPECT_NE(FormatOf(file).colors, kPngGrey);
    EXPECT_EQ(ReadOrFail(file).metadata.colorProfile, notes.metadata.colorProfile);
    const std::string grey = "GRAY";
    std::copy(grey.begin(), grey.end(), notes.metadata.colorProfile.begin() + 16);
    ASSERT_TRUE(EncodePng(2, 1, pixels.data(), &file, &error, notes)) << error;
    EXPECT_EQ(FormatOf(file).colors, kPngGrey);
    EXPECT_EQ(ReadOrFail(file).metadata.colorProfile, notes.metadata.colorProfile);
    const Bytes red = {255, 0, 0, 255, 0, 0, 0, 255};
    ASSERT_TRUE(EncodePng(2, 1, red.data(), &file, &error, notes)) << error;
    EXPECT_TRUE(ReadOrFail(file).metadata.colorProfile.empty()) << "says nothing about colours";
}

// Slopes with a start of their own: 8 bits, and 7 differences of 4 bits. A row of 8 bytes is too short to
// tell by anything else which filter is good for it.
TEST(PngRows, Short_rows_are_filtered_so_that_their_differences_are_small) {
    constexpr size_t kRowBytes = 8, kCount = 4000;
    std::mt19937 random(7);
    PngRows rows = {.bytes = {}, .rowBytes = kRowBytes, .step = 1};
    for (size_t i = 0; i < kCount; ++i) {
        auto value = static_cast<uint8_t>(random());
        for (size_t x = 0; x < kRowBytes; ++x, value = static_cast<uint8_t>(value + random() % 16))
            rows.bytes.push_back(value);
    }
    EXPECT_LT(CompressPngRows(rows, 4).size(), rows.bytes.size() * 4 / 5);
}

// Colours of fully transparent pixels are not kept in animations.
Bytes Visible(Bytes pixels) {
    for (size_t i = 0; i < pixels.size(); i += 4)
        if (pixels[i + 3] == 0) pixels[i] = pixels[i + 1] = pixels[i + 2] = 0;
    return pixels;
}

// What is written plays as what was given; returns the file.
Bytes ExpectSamePlay(const Animation& source) {
    Bytes file;
    std::string error;
    EXPECT_TRUE(EncodeApng(source, &file, &error)) << error;
    const Animation animation = ReadOrFail(file);
    EXPECT_EQ(animation.loopCount, source.loopCount);
    EXPECT_EQ(animation.frames.size(), source.frames.size());
    for (size_t i = 0; i < std::min(animation.frames.size(), source.frames.size()); ++i) {
        EXPECT_TRUE(Visible(animation.frames[i].pixels) == Visible(source.frames[i].pixels)) << i;
        EXPECT_EQ(animation.frames[i].milliseconds, MillisecondsOf(source.frames[i])) << i;
    }
    return file;
}

TEST(ApngWriter, Every_kind_of_animation_plays_as_before) {
    for (const test::GifScene& scene : test::kGifScenes) {
        SCOPED_TRACE(scene.name);
        Bytes gif;
        std::string error;
        ASSERT_TRUE(EncodeGif(scene.make(80, 60, 6), &gif, &error)) << error;
        ExpectSamePlay(ReadOrFail(gif));
    }
}

// Random pictures whose pixels stay with some chance, in few or many colours, with the given alphas.
Animation RandomChanges(unsigned seed, unsigned colors, const std::vector<uint8_t>& alphas) {
    std::mt19937 random(seed);
    Animation animation;
    animation.width = 1 + static_cast<int>(random() % 40);
    animation.height = 1 + static_cast<int>(random() % 30);
    animation.loopCount = static_cast<int>(random() % 4) - 1;
    const size_t area = static_cast<size_t>(animation.width) * static_cast<size_t>(animation.height);
    Bytes pixels(4 * area);
    for (int frame = 0; frame < 6; ++frame) {
        const auto stays = frame == 0 ? 0 : random() % 10;
        const size_t first = frame == 0 ? 0 : random() % area;
        for (size_t i = first; i < area; ++i) {
            if (random() % 10 < stays) continue;
            const auto color = random() % colors;
            pixels[4 * i] = static_cast<uint8_t>(color);
            pixels[4 * i + 1] = static_cast<uint8_t>(color >> 8);
            pixels[4 * i + 2] = static_cast<uint8_t>(color % 3);
            pixels[4 * i + 3] = alphas[random() % alphas.size()];
        }
        animation.frames.emplace_back();
        animation.frames.back().pixels = pixels;
        animation.frames.back().delay = static_cast<int>(random() % 50);
    }
    return animation;
}

TEST(ApngWriter, Random_changes_play_as_before) {
    for (unsigned seed = 0; seed < 15; ++seed) {
        SCOPED_TRACE(seed);
        const unsigned colors = seed % 3 == 0 ? 3 : seed % 3 == 1 ? 80 : 60000;
        ExpectSamePlay(RandomChanges(seed, colors, {255}));
        ExpectSamePlay(RandomChanges(seed, colors, {0, 255}));
        ExpectSamePlay(RandomChanges(seed, colors, {0, 0, 40, 255}));
    }
}

TEST(ApngWriter, Frames_share_a_palette_or_a_transparent_colour) {
    ExpectFormat(FormatOf(ExpectSamePlay(RandomChanges(3, 40, {255}))), kPngPalette, 8, 41, 1, false);
    const PngFormat format = FormatOf(ExpectSamePlay(test::RandomAnimation(30, 20, 3, 5, false)));
    EXPECT_EQ(format.colors, kPngRgb);
    EXPECT_TRUE(format.hasKey);
    EXPECT_EQ(FormatOf(ExpectSamePlay(RandomChanges(8, 60000, {99, 255}))).colors, kPngRgba);
}

// The values of a field of all frames' controls.
std::vector<int> ControlBytes(const Bytes& file, size_t field) {
    std::vector<int> values;
    size_t at = kPngSignatureSize;
    PngChunk chunk;
    while (NextPngChunk(file.data(), file.size(), &at, &chunk))
        if (chunk.name == kFrameControlChunk) values.push_back(chunk.data[field]);
    return values;
}

// A square that moves over nothing is cleared; what blinks over a picture gives it back.
TEST(ApngWriter, Disposal_saves_what_would_be_drawn_again) {
    constexpr int kSide = 40;
    Animation moving;
    moving.width = moving.height = kSide;
    for (int frame = 0; frame < 4; ++frame) {
        Bytes pixels(size_t{4} * kSide * kSide);
        std::mt19937 random(1);
        for (int y = 0; y < 9; ++y)
            for (int x = 0; x < 9; ++x)
                for (int i = 0; i < 4; ++i)
                    pixels[4 * static_cast<size_t>((y + 10 * frame) * kSide) +
                           static_cast<size_t>(4 * x + 40 * frame + i)] =
                        i == 3 ? uint8_t{255} : static_cast<uint8_t>(random());
        moving.frames.emplace_back();
        moving.frames.back().pixels = pixels;
    }
    moving.frames.insert(moving.frames.begin(), Frame());
    moving.frames[0].pixels.resize(size_t{4} * kSide * kSide);
    constexpr size_t kDisposalField = 24;
    EXPECT_EQ(ControlBytes(ExpectSamePlay(moving), kDisposalField)[2], kApngBackground);
    Animation blinking = test::RandomAnimation(kSide, kSide, 1, 5, false);
    for (int i = 1; i < 4; ++i) {
        blinking.frames.push_back(blinking.frames[0]);
        if (i % 2 == 0) continue;
        for (size_t k = 0; k < 4 * 200; ++k)
            if (k % 4 != 3) blinking.frames.back().pixels[k] ^= static_cast<uint8_t>(17 * k + 1);
    }
    EXPECT_EQ(ControlBytes(ExpectSamePlay(blinking), kDisposalField)[1], kApngPrevious);
}

}  // namespace
}  // namespace kfx
