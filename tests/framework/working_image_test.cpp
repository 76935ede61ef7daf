// SPDX-License-Identifier: MIT
#include "framework/working_image.h"

#include <gtest/gtest.h>

#include <cstring>

#include "tests/support/pictures.h"

namespace kfx::test {
namespace {

struct DepthCase {
    int32_t request;
    int32_t bitCount;
    uint32_t colors;
};

TEST(WorkingImage, Depth_requests_choose_bits_per_pixel_and_palette_length) {
    for (const DepthCase& depth : {DepthCase{0, 32, 0},
                                   {1, 1, 2},
                                   {2, 4, 16},
                                   {4, 4, 16},
                                   {5, 8, 256},
                                   {8, 8, 256},
                                   {9, 24, 0},
                                   {24, 24, 0},
                                   {25, 32, 0},
                                   {1000, 32, 0}}) {
        const Picture picture(CreateDib(5, 3, nullptr, depth.request));
        const ImageLock lock(picture.handle);
        ASSERT_TRUE(lock.image) << depth.request;
        EXPECT_EQ(lock.image->bitCount, depth.bitCount) << depth.request;
        EXPECT_EQ(lock.image->colorsUsed, depth.colors) << depth.request;
        EXPECT_EQ(lock.image->colorsImportant, depth.colors) << depth.request;
        const size_t rows = RowStride(5, depth.bitCount) * 3;
        EXPECT_EQ(MemorySize(picture.handle), 40 + rows + 4 * depth.colors) << depth.request;
    }
}

TEST(WorkingImage, The_header_is_filled_in_and_everything_else_is_zero) {
    const Picture picture(CreateDib(5, 3, nullptr, 24));
    const std::vector<uint8_t> bytes = BytesOf(picture.handle);
    const uint8_t header[40] = {40, 0, 0, 0, 5, 0, 0, 0, 3, 0, 0, 0, 1, 0, 24, 0, 0, 0, 0, 0, 48};
    ASSERT_EQ(bytes.size(), 40u + 48u);
    EXPECT_EQ(std::memcmp(bytes.data(), header, sizeof header), 0);
    for (size_t i = 40; i < bytes.size(); ++i) EXPECT_EQ(bytes[i], 0) << i;
}

TEST(WorkingImage, Rows_are_padded_to_four_bytes) {
    EXPECT_EQ(RowStride(1, 1), 4u);
    EXPECT_EQ(RowStride(32, 1), 4u);
    EXPECT_EQ(RowStride(33, 1), 8u);
    EXPECT_EQ(RowStride(9, 4), 8u);
    EXPECT_EQ(RowStride(5, 8), 8u);
    EXPECT_EQ(RowStride(1, 24), 4u);
    EXPECT_EQ(RowStride(4, 24), 12u);
    EXPECT_EQ(RowStride(5, 24), 16u);
    EXPECT_EQ(RowStride(3, 32), 12u);
}

TEST(WorkingImage, Palette_triples_are_stored_blue_green_red_zero) {
    uint8_t palette[kPaletteBytes];
    for (size_t i = 0; i < sizeof palette; ++i) palette[i] = static_cast<uint8_t>(i % 251);
    const Picture picture(CreateDib(1, 1, palette, 4));
    const ImageLock lock(picture.handle);
    const uint8_t* table = ColorTableOf(lock.image);
    for (size_t i = 0; i < 16; ++i) {
        EXPECT_EQ(table[4 * i], palette[3 * i + 2]);
        EXPECT_EQ(table[4 * i + 1], palette[3 * i + 1]);
        EXPECT_EQ(table[4 * i + 2], palette[3 * i]);
        EXPECT_EQ(table[4 * i + 3], 0);
    }
}

TEST(WorkingImage, Impossible_sizes_give_none) {
    EXPECT_EQ(CreateDib(0, 5, nullptr, 24), nullptr);
    EXPECT_EQ(CreateDib(5, 0, nullptr, 24), nullptr);
    EXPECT_EQ(CreateDib(-5, 5, nullptr, 24), nullptr);
    EXPECT_EQ(CreateDib(5, -5, nullptr, 24), nullptr);
    EXPECT_EQ(CreateDib(INT32_MAX, INT32_MAX, nullptr, 0), nullptr);
    EXPECT_EQ(CreateDib(INT32_MAX, 1, nullptr, 24), nullptr);
}

TEST(Pixels, A_colour_has_red_in_its_low_byte_and_stands_blue_first_in_the_row) {
    const Picture picture(CreateDib(2, 2, nullptr, 24));
    const ImageLock lock(picture.handle);
    SetDibPixel(lock.image, 1, 0, 0xFF332211);
    const uint8_t* pixel = PixelsOf(lock.image) + 8 + 3;  // the top row is stored last
    EXPECT_EQ(pixel[0], 0x33);
    EXPECT_EQ(pixel[1], 0x22);
    EXPECT_EQ(pixel[2], 0x11);
    EXPECT_EQ(GetDibPixel(lock.image, 1, 0), 0x332211u);
}

TEST(Pixels, A_32_bit_pixel_keeps_its_fourth_byte) {
    const Picture picture(CreateDib(1, 1, nullptr, 0));
    const ImageLock lock(picture.handle);
    SetDibPixel(lock.image, 0, 0, 0x84332211);
    EXPECT_EQ(PixelsOf(lock.image)[3], 0x84);
    EXPECT_EQ(GetDibPixel(lock.image, 0, 0), 0x84332211u);
}

TEST(Pixels, Four_bits_high_nibble_first) {
    const Picture picture(CreateDib(3, 1, nullptr, 4));
    const ImageLock lock(picture.handle);
    PixelsOf(lock.image)[0] = 0xAB;
    EXPECT_EQ(GetDibPixel(lock.image, 0, 0), 0xAu);
    EXPECT_EQ(GetDibPixel(lock.image, 1, 0), 0xBu);
    SetDibPixel(lock.image, 0, 0, 0x17);
    SetDibPixel(lock.image, 1, 0, 0x2C);
    SetDibPixel(lock.image, 2, 0, 0x5);
    EXPECT_EQ(PixelsOf(lock.image)[0], 0x7C);
    EXPECT_EQ(PixelsOf(lock.image)[1], 0x50);
}

TEST(Pixels, One_bit_most_significant_first_set_by_odd_values_cleared_by_even) {
    const Picture picture(CreateDib(9, 1, nullptr, 1));
    const ImageLock lock(picture.handle);
    for (int32_t x = 0; x < 9; ++x) {
        SetDibPixel(lock.image, x, 0, 3);
        EXPECT_EQ(PixelsOf(lock.image)[x / 8], 128 >> x % 8) << x;
        EXPECT_EQ(GetDibPixel(lock.image, x, 0), 1u) << x;
        SetDibPixel(lock.image, x, 0, 2);
        EXPECT_EQ(PixelsOf(lock.image)[x / 8], 0) << x;
        EXPECT_EQ(GetDibPixel(lock.image, x, 0), 0u) << x;
    }
}

TEST(Pixels, Reading_outside_gives_minus_one_and_writing_outside_changes_nothing) {
    for (const int32_t bitCount : {1, 4, 8, 24, 32}) {
        const Picture picture = RandomPicture(5, 3, 1, bitCount);
        const std::vector<uint8_t> before = BytesOf(picture.handle);
        {
            const ImageLock lock(picture.handle);
            for (const Size& at : {Size{-1, 0}, {5, 0}, {0, -1}, {0, 3}, {INT32_MIN, 0}, {0, INT32_MAX}}) {
                EXPECT_EQ(GetDibPixel(lock.image, at.width, at.height), 0xFFFFFFFFu) << bitCount;
                SetDibPixel(lock.image, at.width, at.height, 0x123456);
            }
        }
        EXPECT_EQ(BytesOf(picture.handle), before) << bitCount;
    }
}

TEST(Pixels, Another_depth_is_neither_read_nor_written) {
    const Picture picture = RandomPicture(5, 3, 1, 32);
    std::vector<uint8_t> before;
    {
        const ImageLock lock(picture.handle);
        lock.image->bitCount = 16;
        before = BytesOf(picture.handle);
        EXPECT_EQ(GetDibPixel(lock.image, 0, 0), 0xFFFFFFFFu);
        SetDibPixel(lock.image, 0, 0, 1);
    }
    EXPECT_EQ(BytesOf(picture.handle), before);
}

// Neither accessor nor row walk looks at the colours-used field: the table is always complete.
TEST(Pixels, The_colour_table_is_whole_whatever_the_colours_used_field_says) {
    const Picture picture = RandomPicture(5, 3, 1, 8);
    const uint32_t pixel = PixelOf(picture.handle, 2, 1);
    const ImageLock lock(picture.handle);
    lock.image->colorsUsed = 3;
    EXPECT_EQ(GetDibPixel(lock.image, 2, 1), pixel);
}

// Written from the rule, pixel by pixel.
Picture ConvertedByRule(ImageHandle source) {
    const ImageLock from(source);
    Picture result(CreateDib(from.image->width, from.image->height, nullptr, 24));
    const ImageLock to(result.handle);
    const uint8_t* table = ColorTableOf(from.image);
    for (int32_t y = 0; y < from.image->height; ++y) {
        for (int32_t x = 0; x < from.image->width; ++x) {
            const uint32_t v = GetDibPixel(from.image, x, y);
            uint32_t color = v & 0xFFFFFF;
            if (from.image->bitCount == 1)
                color = v & 1 ? 0xFFFFFF : 0;
            else if (from.image->bitCount <= 8)
                color = Rgb(table[4 * v + 2], table[4 * v + 1], table[4 * v]);
            SetDibPixel(to.image, x, y, color);
        }
    }
    return result;
}

TEST(ConvertTo24Bits, Follows_the_rule_at_every_depth_and_size) {
    for (const int32_t bitCount : {1, 4, 8, 24, 32}) {
        for (const Size& size : TrickySizes()) {
            const Picture source = RandomPicture(size.width, size.height, 7, bitCount);
            const Picture result(ConvertTo24Bits(source.handle));
            EXPECT_TRUE(SamePicture(ConvertedByRule(source.handle).handle, result.handle))
                << bitCount << " bits, " << size.width << "x" << size.height;
        }
    }
}

TEST(ConvertTo24Bits, One_bit_is_black_and_white_even_with_a_white_and_black_palette) {
    const uint8_t whiteFirst[] = {255, 255, 255, 0, 0, 0};
    const Picture source(CreateDib(2, 1, whiteFirst, 1));
    {
        const ImageLock lock(source.handle);
        SetDibPixel(lock.image, 1, 0, 1);
    }
    const Picture result(ConvertTo24Bits(source.handle));
    EXPECT_EQ(PixelOf(result.handle, 0, 0), 0x000000u);
    EXPECT_EQ(PixelOf(result.handle, 1, 0), 0xFFFFFFu);
}

TEST(ConvertTo24Bits, Leaves_the_source_as_it_was) {
    const Picture source = RandomPicture(17, 5, 3, 8);
    const std::vector<uint8_t> before = BytesOf(source.handle);
    const Picture result(ConvertTo24Bits(source.handle));
    EXPECT_EQ(BytesOf(source.handle), before);
    EXPECT_NE(result.handle, source.handle);
}

TEST(WorkingImage, Copies_carry_size_depth_and_colours) {
    for (const int32_t bitCount : {1, 4, 8, 24, 32}) {
        const Picture source = RandomPicture(5, 3, 9, bitCount);
        const ImageLock lock(source.handle);
        const Picture copy(DuplicateImage(lock.image));
        EXPECT_EQ(BytesOf(copy.handle), BytesOf(source.handle)) << bitCount;
        const Picture blank(CreateLike(lock.image));
        const std::vector<uint8_t> bytes = BytesOf(blank.handle);
        const size_t pixels = 40 + ColorTableBytes(lock.image);
        EXPECT_TRUE(std::equal(bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(pixels),
                               BytesOf(source.handle).begin()))
            << bitCount;
        for (size_t i = pixels; i < bytes.size(); ++i) EXPECT_EQ(bytes[i], 0) << i;
    }
}

}  // namespace
}  // namespace kfx::test
