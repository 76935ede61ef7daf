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

TEST(FrameImage, Puts_the_picture_into_a_canvas) {
    for (const int32_t bits : {1, 4, 8, 24, 32}) {
        const Picture source = RandomPicture(9, 7, 1, bits);
        const Picture canvas(FrameImage(source.handle, 15, 14, 2, 4, 1));
        EXPECT_EQ(PixelOf(canvas.handle, 1, 4), 1u);
        EXPECT_EQ(PixelOf(canvas.handle, 14, 13), 1u);
        for (int32_t y = 0; y < 7; ++y)
            for (int32_t x = 0; x < 9; ++x)
                EXPECT_EQ(PixelOf(canvas.handle, x + 2, y + 4), PixelOf(source.handle, x, y));
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

}  // namespace
}  // namespace kfx::test
