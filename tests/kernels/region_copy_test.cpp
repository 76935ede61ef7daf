// SPDX-License-Identifier: MIT
#include "kernels/region_copy.h"

#include "tests/support/pictures.h"

namespace kfx::test {
namespace {

TEST(CopyPixels, Copies_what_lies_inside_both_pictures) {
    const Picture source = RandomPicture(9, 7, 1);
    for (const Size size : {Size{4, 5}, Size{20, 3}, Size{3, 20}, Size{-1, 4}, Size{100, 100}}) {
        Picture copy = FlatPicture(6, 8, 0x112233);
        {
            const ImageLock from(source.handle);
            const ImageLock to(copy.handle);
            CopyPixels(to.image, from.image, size.width, size.height);
        }
        for (int32_t y = 0; y < 8; ++y)
            for (int32_t x = 0; x < 6; ++x) {
                const bool copied = x < size.width && y < size.height && y < 7;
                EXPECT_EQ(PixelOf(copy.handle, x, y), copied ? PixelOf(source.handle, x, y) : 0x112233u);
            }
    }
}

TEST(CopyPixels, Copies_pixel_values_between_depths) {
    for (const int32_t bits : {1, 4, 8, 24, 32}) {
        const Picture source = RandomPicture(11, 5, 3, bits);
        Picture copy(CreateDib(11, 5, nullptr, 0));
        const ImageLock from(source.handle);
        const ImageLock to(copy.handle);
        CopyPixels(to.image, from.image, 11, 5);
        for (int32_t y = 0; y < 5; ++y)
            for (int32_t x = 0; x < 11; ++x)
                EXPECT_EQ(GetDibPixel(to.image, x, y), GetDibPixel(from.image, x, y));
    }
}

TEST(FrameImage, Puts_the_picture_into_a_canvas_and_CropImage_takes_it_out_again) {
    for (const int32_t bits : {1, 4, 8, 24, 32}) {
        const Picture source = RandomPicture(9, 7, 1, bits);
        const Picture canvas(FrameImage(source.handle, 15, 14, 2, 4, 1));
        EXPECT_EQ(PixelOf(canvas.handle, 1, 4), 1u);
        EXPECT_EQ(PixelOf(canvas.handle, 14, 13), 1u);
        EXPECT_EQ(PixelOf(canvas.handle, 2, 4), PixelOf(source.handle, 0, 0));
        EXPECT_TRUE(SamePicture(source.handle, Picture(CropImage(canvas.handle, {2, 4, 11, 11})).handle));
    }
}

TEST(FrameImage, Cuts_off_what_falls_outside_the_canvas) {
    const Picture source = RandomPicture(9, 7, 1);
    const Picture canvas(FrameImage(source.handle, 4, 3, -2, -3, 0));
    for (int32_t y = 0; y < 3; ++y)
        for (int32_t x = 0; x < 4; ++x)
            EXPECT_EQ(PixelOf(canvas.handle, x, y), PixelOf(source.handle, x + 2, y + 3));
    EXPECT_EQ(FrameImage(source.handle, 0, 3, 0, 0, 0), nullptr);
}

TEST(CropImage, Leaves_pixels_outside_the_source_zero_and_refuses_empty_rectangles) {
    const Picture source = FlatPicture(4, 4, 0xFFFFFF);
    const Picture cropped(CropImage(source.handle, {-1, 2, 3, 6}));
    EXPECT_EQ(PixelOf(cropped.handle, 0, 0), 0u);
    EXPECT_EQ(PixelOf(cropped.handle, 1, 1), 0xFFFFFFu);
    EXPECT_EQ(PixelOf(cropped.handle, 1, 2), 0u);
    EXPECT_EQ(CropImage(source.handle, {2, 2, 2, 4}), nullptr);
    EXPECT_EQ(CropImage(source.handle, {2, 2, 4, 2}), nullptr);
    EXPECT_EQ(CropImage(source.handle, {3, 2, 2, 4}), nullptr);
    EXPECT_EQ(CropImage(source.handle, {2, 3, 4, 2}), nullptr);
    EXPECT_EQ(CropImage(source.handle, {0, INT32_MIN, 4, INT32_MAX}), nullptr);
    EXPECT_EQ(CropImage(source.handle, {INT32_MIN, 0, INT32_MAX, 4}), nullptr);
}

TEST(CropImage, May_be_as_wide_as_numbers_of_32_bits_go) {
    const Picture source = RandomPicture(9, 1, 3, 1);
    const Picture wide(CropImage(source.handle, {0, 0, INT32_MAX, 1}));  // a quarter of a GiB
    const ImageLock lock(wide.handle);
    ASSERT_TRUE(lock);
    EXPECT_EQ(lock->width, INT32_MAX);
    for (int32_t x = 0; x < 9; ++x) EXPECT_EQ(GetDibPixel(lock.image, x, 0), PixelOf(source.handle, x, 0));
}

TEST(CropImage, Takes_a_single_pixel_or_none_of_the_source) {
    const Picture source = RandomPicture(4, 4, 2);
    const Picture pixel(CropImage(source.handle, {1, 2, 2, 3}));
    EXPECT_EQ(PixelOf(pixel.handle, 0, 0), PixelOf(source.handle, 1, 2));
    for (const PixelRect& beside : {PixelRect{4, 0, 6, 2}, PixelRect{-2, 0, 0, 2}, PixelRect{0, 4, 2, 6},
                                    PixelRect{0, -2, 2, 0}, PixelRect{9, 9, 11, 11}})
        EXPECT_TRUE(
            SamePicture(Picture(CropImage(source.handle, beside)).handle, FlatPicture(2, 2, 0).handle));
}

}  // namespace
}  // namespace kfx::test
