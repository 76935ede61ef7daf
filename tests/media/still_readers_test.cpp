// SPDX-License-Identifier: MIT
// PNG files made by the library's encoder, BMP files put together byte by byte.
#include <gtest/gtest.h>
#include <lodepng.h>

#include <cstdlib>
#include <memory>

#include "media/animation.h"
#include "tests/media/gif_builder.h"
#include "tests/media/reading.h"

namespace kfx {
namespace {

using test::Bytes;
using test::ErrorOf;
using test::ReadOrFail;
using test::ShowFrame;

Animation ReadStill(const Bytes& file) {
    Animation animation = ReadOrFail(file);
    EXPECT_EQ(animation.frames.size(), 1u);
    EXPECT_EQ(animation.loopCount, kLoopNone);
    if (animation.frames.empty()) animation.frames.emplace_back();
    return animation;
}

// A PNG of the given kind from raw pixels of the same kind.
Bytes MakePng(unsigned width, unsigned height, LodePNGColorType type, unsigned depth, const Bytes& raw,
              const std::vector<RgbColor>& palette, bool interlaced, int transparentEntry) {
    LodePNGState state;
    lodepng_state_init(&state);
    state.encoder.auto_convert = 0;
    state.info_png.interlace_method = interlaced ? 1 : 0;
    for (LodePNGColorMode* mode : {&state.info_raw, &state.info_png.color}) {
        mode->colortype = type;
        mode->bitdepth = depth;
        for (size_t i = 0; i < palette.size(); ++i) {
            const unsigned char alpha = static_cast<int>(i) == transparentEntry ? 0 : 255;
            lodepng_palette_add(mode, palette[i].red, palette[i].green, palette[i].blue, alpha);
        }
    }
    unsigned char* encoded = nullptr;
    size_t size = 0;
    EXPECT_EQ(lodepng_encode(&encoded, &size, raw.data(), width, height, &state), 0u);
    Bytes file(encoded, encoded + size);
    std::free(encoded);
    lodepng_state_cleanup(&state);
    return file;
}

TEST(PngReader, A_palette_picture_keeps_its_palette_and_indices) {
    const Animation animation =
        ReadStill(MakePng(4, 2, LCT_PALETTE, 8, {0, 1, 2, 3, 7, 6, 5, 4}, test::TextPalette(), false, -1));
    EXPECT_EQ(ShowFrame(animation, 0), "KRGB/WCMY");
    EXPECT_TRUE(animation.hasGlobalPalette);
    EXPECT_EQ(animation.globalPalette, test::TextPalette());
    ASSERT_TRUE(animation.frames[0].indexed);
    EXPECT_EQ(animation.frames[0].indices, (Bytes{0, 1, 2, 3, 7, 6, 5, 4}));
}

TEST(PngReader, Few_bits_and_interlace_make_no_difference) {
    // Two pixels a byte, without padding between rows.
    for (const bool interlaced : {false, true}) {
        const Bytes packed = {0x01, 0x23, 0x47, 0x65, 0x43, 0x12, 0x34, 0x50};
        const Animation animation =
            ReadStill(MakePng(5, 3, LCT_PALETTE, 4, packed, test::TextPalette(), interlaced, -1));
        EXPECT_EQ(ShowFrame(animation, 0), "KRGBY/WCMYB/RGBYM") << interlaced;
        EXPECT_TRUE(animation.frames[0].indexed);
    }
}

TEST(PngReader, A_transparent_palette_entry_is_transparent) {
    const Animation animation =
        ReadStill(MakePng(3, 1, LCT_PALETTE, 8, {1, 2, 3}, test::TextPalette(), false, 2));
    EXPECT_EQ(ShowFrame(animation, 0), "R.B");
    EXPECT_TRUE(animation.frames[0].transparent);
    EXPECT_FALSE(animation.frames[0].indexed);
}

TEST(PngReader, Grey_and_deep_pictures_become_eight_bit_colours) {
    const Animation grey = ReadStill(MakePng(2, 1, LCT_GREY, 8, {0, 255}, {}, false, -1));
    EXPECT_EQ(ShowFrame(grey, 0), "KW");
    EXPECT_FALSE(grey.hasGlobalPalette);
    const Bytes raw = {255, 255, 0, 0, 0, 0, 0, 0, 0, 0, 255, 255};
    EXPECT_EQ(ShowFrame(ReadStill(MakePng(2, 1, LCT_RGB, 16, raw, {}, false, -1)), 0), "RB");
}

TEST(PngReader, Samples_of_16_bits_are_rounded) {
    const Bytes raw = {0x00, 0x80, 0x00, 0x81, 0xFE, 0x7F, 0xFF, 0x7E, 0xFF, 0x7F, 0xFF, 0x80};
    const Animation animation = ReadStill(MakePng(2, 1, LCT_RGB, 16, raw, {}, false, -1));
    EXPECT_EQ(animation.frames[0].pixels, (Bytes{0, 1, 254, 255, 254, 255, 255, 255}));
}

TEST(PngReader, A_cut_or_changed_file_is_an_error) {
    const Bytes file = MakePng(4, 2, LCT_RGBA, 8, Bytes(32, 90), {}, true, -1);
    // The last twelve bytes are an empty end mark, which the decoder does not miss.
    for (size_t length = 1; length < file.size() - 12; ++length)
        EXPECT_NE(ErrorOf(Bytes(file.begin(), file.begin() + static_cast<ptrdiff_t>(length))), "") << length;
    Bytes changed = file;
    changed[file.size() - 20] ^= 1;
    EXPECT_EQ(ErrorOf(changed), "the PNG file is damaged: its picture data are damaged");
}

TEST(PngReader, Absurd_sizes_are_refused_before_anything_is_allocated) {
    Bytes file = MakePng(1, 1, LCT_GREY, 8, {0}, {}, false, -1);
    file[16] = file[20] = 0x7F;  // the highest bytes of width and height
    const unsigned checksum = lodepng_crc32(file.data() + 12, 17);
    for (unsigned i = 0; i < 4; ++i) file[29 + i] = static_cast<uint8_t>(checksum >> (24 - 8 * i));
    EXPECT_EQ(ErrorOf(file),
              "the picture of 2130706433 x 2130706433 pixels is too large: a side may have 65535");
}

void PutU16(Bytes* file, unsigned value) {
    file->push_back(static_cast<uint8_t>(value));
    file->push_back(static_cast<uint8_t>(value >> 8));
}

void PutU32(Bytes* file, uint32_t value) {
    PutU16(file, value & 0xFFFF);
    PutU16(file, value >> 16);
}

// A file with a 40-byte header; `extra` (palette or masks) stands between header and pixels.
Bytes MakeBmp(int width, int height, unsigned bitCount, unsigned compression, const Bytes& extra,
              const Bytes& pixels) {
    Bytes file = {'B', 'M'};
    PutU32(&file, static_cast<uint32_t>(54 + extra.size() + pixels.size()));
    PutU32(&file, 0);
    PutU32(&file, static_cast<uint32_t>(54 + extra.size()));
    PutU32(&file, 40);
    PutU32(&file, static_cast<uint32_t>(width));
    PutU32(&file, static_cast<uint32_t>(height));
    PutU16(&file, 1);
    PutU16(&file, bitCount);
    PutU32(&file, compression);
    PutU32(&file, static_cast<uint32_t>(pixels.size()));
    PutU32(&file, 2835);
    PutU32(&file, 2835);
    PutU32(&file, bitCount <= 8 ? static_cast<uint32_t>(extra.size() / 4) : 0);
    PutU32(&file, 0);
    file.insert(file.end(), extra.begin(), extra.end());
    file.insert(file.end(), pixels.begin(), pixels.end());
    return file;
}

Bytes BmpPalette(size_t entries) {
    Bytes palette;
    for (size_t i = 0; i < entries; ++i) {
        const RgbColor color = i < 8 ? test::TextPalette()[i] : RgbColor{9, 9, 9};
        palette.insert(palette.end(), {color.blue, color.green, color.red, 0});
    }
    return palette;
}

TEST(BmpReader, Rows_run_upwards_unless_the_height_is_negative) {
    const Bytes pixels = {1, 2, 3, 0, 4, 5, 6, 0};
    EXPECT_EQ(ShowFrame(ReadStill(MakeBmp(3, 2, 8, 0, BmpPalette(8), pixels)), 0), "YMC/RGB");
    EXPECT_EQ(ShowFrame(ReadStill(MakeBmp(3, -2, 8, 0, BmpPalette(8), pixels)), 0), "RGB/YMC");
}

TEST(BmpReader, Indices_of_one_four_and_eight_bits_are_kept) {
    const Animation one = ReadStill(MakeBmp(10, 1, 1, 0, BmpPalette(2), {0xA5, 0x40, 0, 0}));
    EXPECT_EQ(ShowFrame(one, 0), "RKRKKRKRKR");
    const Animation four = ReadStill(MakeBmp(3, 1, 4, 0, BmpPalette(8), {0x12, 0x70, 0, 0}));
    EXPECT_EQ(ShowFrame(four, 0), "RGW");
    ASSERT_TRUE(four.frames[0].indexed);
    EXPECT_EQ(four.frames[0].indices, (Bytes{1, 2, 7}));
    EXPECT_TRUE(four.hasGlobalPalette);
    EXPECT_EQ(four.globalPalette, test::TextPalette());
    const Animation beyond = ReadStill(MakeBmp(2, 1, 8, 0, BmpPalette(3), {2, 200, 0, 0}));
    EXPECT_EQ(ShowFrame(beyond, 0), "GK");
    EXPECT_FALSE(beyond.frames[0].indexed) << "an index without a colour is not on the palette";
}

TEST(BmpReader, True_colour_of_sixteen_twenty_four_and_thirty_two_bits) {
    EXPECT_EQ(ShowFrame(ReadStill(MakeBmp(2, 1, 24, 0, {}, {0, 0, 255, 255, 0, 0, 0, 0})), 0), "RB");
    EXPECT_EQ(ShowFrame(ReadStill(MakeBmp(2, 1, 32, 0, {}, {0, 255, 0, 0, 255, 255, 0, 0})), 0), "GC");
    EXPECT_EQ(ShowFrame(ReadStill(MakeBmp(2, 1, 16, 0, {}, {0x00, 0x7C, 0xE0, 0x03})), 0), "RG");
    Bytes masks;
    for (const uint32_t mask : {0xF800u, 0x07E0u, 0x001Fu}) PutU32(&masks, mask);
    EXPECT_EQ(ShowFrame(ReadStill(MakeBmp(2, 1, 16, 3, masks, {0x00, 0xF8, 0xFF, 0xFF})), 0), "RW");
    PutU32(&masks, 0xFF000000);
    const Animation alpha = ReadStill(MakeBmp(1, 1, 32, 6, masks, {0, 0xF8, 0, 0x80}));
    EXPECT_EQ(alpha.frames[0].pixels, (Bytes{255, 0, 0, 128}));
    EXPECT_TRUE(alpha.frames[0].transparent);
}

TEST(BmpReader, Run_lengths_of_eight_bits_with_jumps_and_singles) {
    const Bytes pixels = {3, 1, 0, 0,              // RRR, end of row
                          0, 3, 2, 3, 4, 0, 0, 0,  // GBY as single values with padding, end of row
                          0, 2, 2, 1, 1, 7,        // jump by (2, 1), W
                          9, 5,                    // runs beyond the row are cut
                          0, 1};
    EXPECT_EQ(ShowFrame(ReadStill(MakeBmp(4, 4, 8, 1, BmpPalette(8), pixels)), 0), "KKWM/KKKK/GBYK/RRRK");
}

TEST(BmpReader, Run_lengths_of_four_bits_alternate_two_colours) {
    const Bytes pixels = {5, 0x12, 0, 0, 0, 5, 0x34, 0x56, 0x70, 0, 0, 1};
    EXPECT_EQ(ShowFrame(ReadStill(MakeBmp(5, 2, 4, 2, BmpPalette(8), pixels)), 0), "BYMCW/RGRGR");
}

TEST(BmpReader, Run_lengths_stay_inside_the_picture_and_the_file) {
    const struct {
        Bytes pixels;
        const char* shown;
    } kCases[] = {
        {{0, 2, 9, 0, 5, 1}, "KKKK/KKKK"},                    // a jump over the row's end
        {{3, 1, 0, 2, 2, 0, 1, 2}, "KKKK/RRRK"},              // and one from its middle
        {{0, 2, 4, 0, 0, 0, 2, 1}, "RRKK/KKKK"},              // to the end: the next row is as usual
        {{0, 2, 0, 1, 2, 1, 0, 0, 3, 2}, "RRKK/KKKK"},        // a run above the last row
        {{0, 2, 0, 200, 3, 1}, "KKKK/KKKK"},                  // a jump over all rows
        {{0, 0, 0, 0, 0, 0, 3, 1}, "KKKK/KKKK"},              // more rows than there are
        {{1, 1, 0, 2, 1}, "KKKK/RKKK"},                       // cut inside a jump
        {{1, 1, 0, 4, 1, 2, 3}, "KKKK/RKKK"},                 // cut inside single values: none is taken
        {{0, 3, 1, 2, 3}, "KKKK/RGBK"},                       // the last padding is missing
        {{0, 4, 1, 2, 3, 4, 0, 0, 2, 1}, "RRKK/RGBY"},        // as many values as need no padding
        {{0, 5, 1, 2, 3, 4, 5, 0, 0, 0, 2, 1}, "RRKK/RGBY"},  // more than the row has
        {{2, 1, 3}, "KKKK/RRKK"},                             // half a pair
        {{2, 1, 0, 1, 2, 2}, "KKKK/RRKK"},                    // nothing counts behind the end
        {{2, 1}, "KKKK/RRKK"},
        {{}, "KKKK/KKKK"},
    };
    for (const auto& [pixels, shown] : kCases)
        EXPECT_EQ(ShowFrame(ReadStill(MakeBmp(4, 2, 8, 1, BmpPalette(8), pixels)), 0), shown)
            << testing::PrintToString(pixels);
}

TEST(BmpReader, Single_values_of_four_bits_fill_whole_words) {
    const auto shown = [](const Bytes& pixels) {
        return ShowFrame(ReadStill(MakeBmp(9, 1, 4, 2, BmpPalette(8), pixels)), 0);
    };
    EXPECT_EQ(shown({0, 3, 0x12, 0x30, 2, 0x45}), "RGBYMKKKK");
    EXPECT_EQ(shown({0, 4, 0x12, 0x34, 2, 0x56}), "RGBYMCKKK");
    EXPECT_EQ(shown({0, 6, 0x12, 0x34, 0x56, 0, 2, 0x71}), "RGBYMCWRK");
    EXPECT_EQ(shown({0, 5, 0x12, 0x34}), "KKKKKKKKK");
}

TEST(BmpReader, The_oldest_header_is_read) {
    Bytes file = {'B', 'M'};
    PutU32(&file, 0);
    PutU32(&file, 0);
    PutU32(&file, 14 + 12 + 6);
    PutU32(&file, 12);
    for (const unsigned value : {9u, 1u, 1u, 1u}) PutU16(&file, value);
    file.insert(file.end(), {0, 0, 255, 255, 0, 0});  // red, blue
    file.insert(file.end(), {0x80, 0x80, 0, 0});
    EXPECT_EQ(ShowFrame(ReadStill(file), 0), "BRRRRRRRB");
}

TEST(BmpReader, A_cut_file_is_an_error) {
    const Bytes file = MakeBmp(3, 2, 8, 0, BmpPalette(8), {1, 2, 3, 0, 4, 5, 6, 0});
    for (size_t length = 1; length < file.size(); ++length)
        EXPECT_NE(ErrorOf(Bytes(file.begin(), file.begin() + static_cast<ptrdiff_t>(length))), "") << length;
    EXPECT_EQ(ErrorOf(Bytes(file.begin(), file.end() - 1)), "the BMP file ends before its last row");
}

TEST(BmpReader, Values_that_no_bitmap_has_are_an_error) {
    const std::string unknown = "the BMP file is damaged or of an unknown kind";
    EXPECT_EQ(ErrorOf(MakeBmp(3, 2, 7, 0, BmpPalette(8), Bytes(8))), unknown);
    EXPECT_EQ(ErrorOf(MakeBmp(-3, 2, 8, 0, BmpPalette(8), Bytes(8))), unknown);
    EXPECT_EQ(ErrorOf(MakeBmp(0, 2, 8, 0, BmpPalette(8), Bytes(8))), unknown);
    EXPECT_EQ(ErrorOf(MakeBmp(3, INT32_MIN, 8, 0, BmpPalette(8), Bytes(8))), unknown);
    EXPECT_EQ(ErrorOf(MakeBmp(3, 2, 8, 4, BmpPalette(8), Bytes(8))), unknown);
    EXPECT_EQ(ErrorOf(MakeBmp(70000, 20000, 24, 0, {}, Bytes(8))),
              "the picture of 70000 x 20000 pixels is too large: a side may have 65535");
    EXPECT_EQ(ErrorOf(MakeBmp(30000, 20000, 24, 0, {}, Bytes(8))),
              "the picture of 30000 x 20000 has 600000000 pixels; the limit is 536870912");
    EXPECT_EQ(ErrorOf(MakeBmp(20000, 20000, 24, 0, {}, Bytes(8))), "the BMP file ends before its last row");
}

}  // namespace
}  // namespace kfx
