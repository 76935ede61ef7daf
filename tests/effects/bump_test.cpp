// SPDX-License-Identifier: MIT
#include "effects/effects.h"

#include "tests/effects/expected_controls.h"
#include "tests/support/effect_checks.h"

namespace kfx::test {
namespace {

TEST(Bump, Has_these_controls) { ExpectControls(kBump, "Bump", 7413, {}); }

TEST(Bump, Equals_its_reference_on_pictures_of_all_sizes) { ExpectReferenceOnTrickyPictures(kBump, {}); }

TEST(Bump, A_uniform_picture_stays_uniform) {
    const Picture source = FlatPicture(7, 5, 0x123456);
    EXPECT_TRUE(SamePicture(source.handle, Apply(kBump, source.handle, {}).handle));
}

TEST(Bump, A_white_pixel_whitens_its_neighbours_above_and_to_the_left_only) {
    Picture source = FlatPicture(7, 7, 0);
    {
        const ImageLock lock(source.handle);
        SetDibPixel(lock.image, 3, 3, 0xFFFFFF);
    }
    const Picture result = Apply(kBump, source.handle, {});
    for (int32_t y = 0; y < 7; ++y)
        for (int32_t x = 0; x < 7; ++x) {
            const bool white =
                (x == 3 && y == 3) || (x == 3 && y == 2) || (x == 2 && y == 3) || (x == 2 && y == 2);
            EXPECT_EQ(PixelOf(result.handle, x, y), white ? 0xFFFFFFu : 0u) << x << ", " << y;
        }
}

TEST(Bump, Neighbours_outside_the_picture_are_the_centres_own_row_and_column) {
    Picture source(CreateDib(2, 2, nullptr, 24));
    {
        const ImageLock lock(source.handle);
        const uint32_t greys[] = {10, 40, 90, 160};
        for (int32_t i = 0; i < 4; ++i) SetDibPixel(lock.image, i % 2, i / 2, greys[i] * 0x010101);
    }
    // Top left: above row and left column read the corner itself: 10 + 40 + 90 + 160 - 10 - 10 - 10.
    EXPECT_EQ(PixelOf(Apply(kBump, source.handle, {}).handle, 0, 0), 0xFFFFFFu);
    {
        const ImageLock lock(source.handle);
        SetDibPixel(lock.image, 1, 1, 0);
    }
    EXPECT_EQ(PixelOf(Apply(kBump, source.handle, {}).handle, 0, 0), 110u * 0x010101);
}

TEST(Bump, Refused_memory_is_survived) {
    ExpectRefusedMemoryIsSurvived(kBump, RandomPicture(9, 8, 1).handle, {});
}

}  // namespace
}  // namespace kfx::test
