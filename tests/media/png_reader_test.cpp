// SPDX-License-Identifier: MIT
// PNG files put together chunk by chunk, and what another decoder makes of them.
#include <gtest/gtest.h>
#include <lodepng.h>

#include <cstdlib>
#include <random>

#include "media/animation.h"
#include "media/png_deflate.h"
#include "media/png_format.h"
#include "tests/media/reading.h"

namespace kfx {
namespace {

using test::Bytes;
using test::ErrorOf;

Animation ReadOrFail(const Bytes& file) {
    Animation animation = test::ReadOrFail(file);
    if (animation.frames.empty()) animation.frames.emplace_back();
    return animation;
}

Bytes HeaderOf(const PngFormat& format, int width, int height) {
    Bytes header;
    PutBigWord32(&header, static_cast<uint32_t>(width));
    PutBigWord32(&header, static_cast<uint32_t>(height));
    header.insert(header.end(), {static_cast<uint8_t>(format.depth), format.colors, 0, 0,
                                 static_cast<uint8_t>(format.interlaced ? 1 : 0)});
    return header;
}

// Rows of any bytes are a picture, as long as each begins with the number of a filter.
Bytes RandomRows(const PngFormat& format, int width, int height, std::mt19937* random) {
    struct Step {
        int left, top, x, y;
    };
    std::vector<Step> steps = {{0, 0, 1, 1}};
    if (format.interlaced)
        steps = {{0, 0, 8, 8}, {4, 0, 8, 8}, {0, 4, 4, 8}, {2, 0, 4, 4},
                 {0, 2, 2, 4}, {1, 0, 2, 2}, {0, 1, 1, 2}};
    Bytes rows;
    for (const Step& step : steps) {
        int columns = 0;
        for (int x = step.left; x < width; x += step.x) ++columns;
        if (columns == 0) continue;
        for (int y = step.top; y < height; y += step.y) {
            rows.push_back(static_cast<uint8_t>((*random)() % 5));
            for (size_t i = 0; i < PngRowBytes(format, columns); ++i)
                rows.push_back(static_cast<uint8_t>((*random)()));
        }
    }
    return rows;
}

Bytes FileOf(const PngFormat& format, int width, int height, const Bytes& rows) {
    Bytes file;
    PutPngSignature(&file);
    PutPngChunk(&file, kHeaderChunk, HeaderOf(format, width, height));
    Bytes palette;
    for (const RgbColor color : format.palette)
        palette.insert(palette.end(), {color.red, color.green, color.blue});
    if (!palette.empty()) PutPngChunk(&file, kPaletteChunk, palette);
    Bytes key;
    for (int i = 0; i < ChannelsOf(format) && format.hasKey; ++i) PutBigWord16(&key, format.key[i]);
    if (format.hasKey) PutPngChunk(&file, kTransparencyChunk, key);
    if (!format.alphas.empty()) PutPngChunk(&file, kTransparencyChunk, format.alphas);
    // Two chunks: where one ends means nothing.
    const Bytes data = Pack(rows.data(), rows.size(), 1);
    const auto middle = static_cast<ptrdiff_t>(data.size() / 3);
    PutPngChunk(&file, kDataChunk, {data.begin(), data.begin() + middle});
    PutPngChunk(&file, kDataChunk, {data.begin() + middle, data.end()});
    PutPngChunk(&file, kEndChunk, {});
    return file;
}

// What the other decoder shows, samples of 16 bits rounded.
Bytes OtherPixels(const Bytes& file, int depth) {
    LodePNGState state;
    lodepng_state_init(&state);
    state.info_raw.bitdepth = depth == 16 ? 16 : 8;
    unsigned char* decoded = nullptr;
    unsigned width = 0;
    unsigned height = 0;
    EXPECT_EQ(lodepng_decode(&decoded, &width, &height, &state, file.data(), file.size()), 0u);
    lodepng_state_cleanup(&state);
    Bytes pixels(size_t{4} * width * height);
    for (size_t i = 0; i < pixels.size(); ++i) {
        const unsigned deep = depth == 16 ? decoded[2 * i] * 256u + decoded[2 * i + 1] : decoded[i] * 257u;
        pixels[i] = static_cast<uint8_t>((deep + 128) / 257);
    }
    std::free(decoded);
    return pixels;
}

struct Kind {
    PngColors colors;
    std::vector<int> depths;
};

const Kind kKinds[] = {{kPngGrey, {1, 2, 4, 8, 16}},
                       {kPngRgb, {8, 16}},
                       {kPngPalette, {1, 2, 4, 8}},
                       {kPngGreyAlpha, {8, 16}},
                       {kPngRgba, {8, 16}}};

TEST(PngReader, Every_colour_depth_and_size_is_shown_as_another_decoder_shows_it) {
    std::mt19937 random(9);
    for (const Kind& kind : kKinds) {
        for (const int depth : kind.depths) {
            for (int i = 0; i < 40; ++i) {
                PngFormat format = {.colors = kind.colors,
                                    .depth = depth,
                                    .interlaced = i % 2 == 1,
                                    .palette = {},
                                    .alphas = {}};
                const int width = i < 20 ? 1 + i / 2 : 1 + static_cast<int>(random() % 70);
                const int height = i < 20 ? 1 + i / 3 : 1 + static_cast<int>(random() % 40);
                const Bytes rows = RandomRows(format, width, height, &random);
                if (kind.colors == kPngPalette) {
                    for (size_t entry = random() % 200; entry < 256; ++entry)
                        format.palette.push_back(
                            {static_cast<uint8_t>(random()), static_cast<uint8_t>(random()), 7});
                    for (size_t entry = random() % 56; entry < 56; ++entry)
                        format.alphas.push_back(static_cast<uint8_t>(random()));
                }
                format.hasKey = i % 3 == 0 && (kind.colors == kPngGrey || kind.colors == kPngRgb);
                if (format.hasKey && depth < 16) format.key[0] = static_cast<uint16_t>(random() % 2);
                const Bytes file = FileOf(format, width, height, rows);
                ASSERT_TRUE(ReadOrFail(file).frames[0].pixels == OtherPixels(file, depth))
                    << kind.colors << " " << depth << " " << width << "x" << height << " " << i;
            }
        }
    }
}

PngFormat TwoColours() {
    return {.colors = kPngPalette, .depth = 8, .palette = {{10, 20, 30}, {40, 50, 60}}, .alphas = {}};
}

TEST(PngReader, A_colour_that_stands_twice_in_the_palette_keeps_its_index) {
    PngFormat format = TwoColours();
    format.palette.push_back(format.palette[0]);
    const Animation animation = ReadOrFail(FileOf(format, 4, 1, {0, 2, 1, 0, 2}));
    ASSERT_TRUE(animation.frames[0].indexed);
    EXPECT_EQ(animation.frames[0].indices, (Bytes{2, 1, 0, 2}));
}

TEST(PngReader, Indices_beyond_the_palette_are_black) {
    const Animation animation = ReadOrFail(FileOf(TwoColours(), 2, 1, {0, 1, 2}));
    EXPECT_EQ(animation.frames[0].pixels, (Bytes{40, 50, 60, 255, 0, 0, 0, 255}));
    EXPECT_FALSE(animation.frames[0].indexed);
}

TEST(PngReader, The_key_of_each_kind_makes_its_pixels_transparent) {
    const auto alphasOf = [](PngColors colors, int depth, std::vector<uint16_t> key, const Bytes& rows) {
        PngFormat format = {.colors = colors, .depth = depth, .palette = {}, .alphas = {}};
        format.hasKey = true;
        std::copy(key.begin(), key.end(), format.key);
        const Bytes pixels = ReadOrFail(FileOf(format, 2, 1, rows)).frames[0].pixels;
        return std::pair{int{pixels[3]}, int{pixels[7]}};
    };
    EXPECT_EQ(alphasOf(kPngGrey, 8, {7}, {0, 7, 8}), std::pair(0, 255));
    EXPECT_EQ(alphasOf(kPngGrey, 16, {0x0102}, {0, 1, 2, 1, 3}), std::pair(0, 255));
    const Bytes first = {1, 2, 3}, none[] = {{9, 2, 3}, {1, 9, 3}, {1, 2, 9}};
    for (const Bytes& other : none) {
        Bytes bytes = {0}, words = {0};
        for (const Bytes* pixel : {&first, &other}) {
            for (const uint8_t sample : *pixel) {
                bytes.push_back(sample);
                words.insert(words.end(), {5, sample});
            }
        }
        EXPECT_EQ(alphasOf(kPngRgb, 8, {1, 2, 3}, bytes), std::pair(0, 255));
        EXPECT_EQ(alphasOf(kPngRgb, 16, {0x501, 0x502, 0x503}, words), std::pair(0, 255));
    }
}

TEST(PngReader, Unknown_filters_and_rows_of_a_wrong_number_are_damage) {
    const std::string damaged = "the PNG file is damaged: its picture data are damaged";
    EXPECT_EQ(ErrorOf(FileOf(TwoColours(), 2, 1, {5, 1, 1})), damaged);
    EXPECT_EQ(ErrorOf(FileOf(TwoColours(), 2, 2, {0, 1, 1})), damaged);
    EXPECT_EQ(ErrorOf(FileOf(TwoColours(), 2, 1, {0, 1, 1, 0, 1, 1})), damaged);
    const PngFormat deep = {.colors = kPngGrey, .depth = 16, .palette = {}, .alphas = {}};
    EXPECT_EQ(ErrorOf(FileOf(deep, 1, 1, {5, 1, 1})), damaged);
    EXPECT_EQ(ErrorOf(FileOf(deep, 1, 2, {0, 1, 1})), damaged);
    EXPECT_EQ(ErrorOf(FileOf(deep, 1, 1, {0, 1, 1, 0, 1, 1})), damaged);
    EXPECT_EQ(ErrorOf(FileOf(deep, 1, 1, {0, 1, 1, 0})), damaged);
}

// A picture whose data stand in chunks of one byte, with empty ones between; the byte number `broken` is
// another.
Bytes FileOfSmallChunks(const PngFormat& format, const Bytes& rows, size_t broken) {
    Bytes file;
    PutPngSignature(&file);
    PutPngChunk(&file, kHeaderChunk, HeaderOf(format, 2, 2));
    Bytes data = Pack(rows.data(), rows.size(), 1);
    if (broken < data.size()) data[data.size() - 1 - broken] ^= 1;
    for (const uint8_t byte : data) {
        PutPngChunk(&file, kDataChunk, {});
        PutPngChunk(&file, kDataChunk, {byte});
    }
    PutPngChunk(&file, kEndChunk, {});
    return file;
}

TEST(PngReader, Data_may_stand_in_any_chunks_and_have_a_checksum) {
    for (const int depth : {8, 16}) {
        const PngFormat format = {.colors = kPngRgba, .depth = depth, .palette = {}, .alphas = {}};
        Bytes rows;
        for (size_t i = 0; i < 2 * (PngRowBytes(format, 2) + 1); ++i)
            rows.push_back(static_cast<uint8_t>(i % (PngRowBytes(format, 2) + 1) == 0 ? 1 : 7 * i));
        const Animation animation = ReadOrFail(FileOfSmallChunks(format, rows, SIZE_MAX));
        EXPECT_TRUE(animation.frames[0].pixels == OtherPixels(FileOf(format, 2, 2, rows), depth));
        // The checksum is the last thing.
        for (const size_t broken : {0u, 3u})
            EXPECT_EQ(ErrorOf(FileOfSmallChunks(format, rows, broken)),
                      "the PNG file is damaged: its picture data are damaged");
    }
}

TEST(PngReader, What_is_wrong_is_said) {
    PngFormat noPalette = TwoColours();
    noPalette.palette.clear();
    EXPECT_EQ(ErrorOf(FileOf(noPalette, 2, 1, {0, 1, 1})), "the PNG file is damaged: it has no palette");
    PngFormat alphas = TwoColours();
    alphas.alphas = {1, 2, 3};
    EXPECT_EQ(ErrorOf(FileOf(alphas, 2, 1, {0, 1, 1})),
              "the PNG file is damaged: its transparency is damaged");
    PngFormat depth = TwoColours();
    depth.depth = 3;
    EXPECT_EQ(ErrorOf(FileOf(depth, 2, 1, {0, 1, 1})),
              "the PNG file is damaged: its header is wrong or cut off");
    Bytes unknown;
    PutPngSignature(&unknown);
    PutPngChunk(&unknown, kHeaderChunk, HeaderOf(TwoColours(), 1, 1));
    PutPngChunk(&unknown, PngName("NEED"), {});
    EXPECT_EQ(ErrorOf(unknown), "the PNG file is damaged: it has a part of an unknown kind");
}

TEST(PngReader, A_missing_end_mark_is_no_damage_and_a_missing_row_is) {
    const Bytes file = FileOf(TwoColours(), 2, 1, {0, 1, 0});
    for (size_t missing = 1; missing <= 12; ++missing)
        EXPECT_EQ(ReadOrFail(Bytes(file.begin(), file.end() - static_cast<ptrdiff_t>(missing))).width, 2);
    EXPECT_EQ(ErrorOf(Bytes(file.begin(), file.end() - 13)), "the PNG file is damaged: it is cut off");
}

// The largest allowed sides would need gigabytes; data of some bytes cannot be that picture.
TEST(PngReader, A_large_size_with_few_data_is_refused_before_memory_is_taken) {
    const PngFormat format = {.colors = kPngRgba, .depth = 16, .palette = {}, .alphas = {}};
    EXPECT_EQ(ErrorOf(FileOf(format, 16384, 16384, Bytes(1000))),
              "the PNG file is damaged: its picture data are damaged");
}

}  // namespace
}  // namespace kfx
