// SPDX-License-Identifier: MIT
#include "builder/reserved_index.h"

#include <gtest/gtest.h>

#include "tests/support/pictures.h"

namespace kfx::test {
namespace {

constexpr int32_t kDepths[] = {1, 4, 8};

Picture CopyOf(ImageHandle image) {
    const ImageLock lock(image);
    return Picture(DuplicateImage(lock.image));
}

TEST(ReservedIndex, Unchanged_pixels_take_it_and_those_outside_the_mask_stay) {
    uint32_t seed = 0;
    for (const int32_t depth : kDepths) {
        for (const Size size : TrickySizes()) {
            for (const Size maskSize : {size, Size{size.width + 3, size.height + 2}, Size{9, 2}}) {
                Picture mask = RandomPicture(maskSize.width, maskSize.height, ++seed, 1);
                {
                    // Whole bytes of equal bits, too, as still scenes have them.
                    const ImageLock lock(mask.handle);
                    for (int32_t x = 0; x < maskSize.width; ++x)
                        SetDibPixel(lock.image, x, 0, static_cast<uint32_t>(x / 16 % 2));
                }
                const Picture converted = RandomPicture(size.width, size.height, ++seed, depth);
                const Picture expected = CopyOf(converted.handle);
                const int32_t index = depth == 1 ? 1 : depth == 4 ? 13 : 200;
                for (int32_t y = 0; y < size.height; ++y) {
                    for (int32_t x = 0; x < size.width; ++x) {
                        if (PixelOf(mask.handle, x, y) != 1) continue;
                        const ImageLock lock(expected.handle);
                        SetDibPixel(lock.image, x, y, static_cast<uint32_t>(index));
                    }
                }
                ASSERT_TRUE(MarkUnchanged(mask.handle, converted.handle, index));
                ASSERT_TRUE(SamePicture(expected.handle, converted.handle))
                    << size.width << "x" << size.height << "x" << depth;
            }
        }
    }
}

TEST(ReservedIndex, Pixels_of_the_background_colour_take_it_and_no_others) {
    for (const int32_t depth : kDepths) {
        const Picture full = FlatPicture(11, 5, Rgb(1, 2, 3));
        {
            const ImageLock lock(full.handle);
            SetDibPixel(lock.image, 4, 1, Rgb(1, 2, 4));
            SetDibPixel(lock.image, 10, 4, Rgb(255, 255, 255));
        }
        const Picture converted = RandomPicture(11, 5, 7, depth);
        const Picture before = CopyOf(converted.handle);
        // Only the low 24 bits of the colour count.
        ASSERT_TRUE(MarkBackground(full.handle, Rgb(1, 2, 3) | 0xAA000000, converted.handle, 1));
        for (int32_t y = 0; y < 5; ++y) {
            for (int32_t x = 0; x < 11; ++x) {
                const bool other = (x == 4 && y == 1) || (x == 10 && y == 4);
                EXPECT_EQ(PixelOf(converted.handle, x, y), other ? PixelOf(before.handle, x, y) : 1u);
            }
        }
    }
}

TEST(ReservedIndex, Missing_images_fail) {
    const Picture picture = FlatPicture(4, 4, 0);
    EXPECT_FALSE(MarkBackground(nullptr, 0, picture.handle, 1));
    EXPECT_FALSE(MarkBackground(picture.handle, 0, nullptr, 1));
    EXPECT_FALSE(MarkUnchanged(nullptr, picture.handle, 1));
    EXPECT_FALSE(MarkUnchanged(picture.handle, nullptr, 1));
}

}  // namespace
}  // namespace kfx::test
