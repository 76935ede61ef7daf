// SPDX-License-Identifier: MIT
#include "effects/effects.h"

#include "tests/effects/expected_controls.h"
#include "tests/support/effect_checks.h"

namespace kfx::test {
namespace {

TEST(Obscure, Has_these_controls) {
    ExpectControls(
        kObscure, "Obscure", 7405,
        {
            {.id = 127, .key = "Style005Level", .builtIn = 8, .text = "2,64,8", .caption = "Level:"},
        });
}

TEST(Obscure, Equals_its_reference_on_pictures_of_all_sizes) {
    for (const int32_t level : {1, 2, 3, 8, 64, 1000}) ExpectReferenceOnTrickyPictures(kObscure, {level});
}

TEST(Obscure, Tiles_taller_than_sixteen_bit_sums_hold_are_averaged_exactly) {
    EXPECT_TRUE(SameAsReference(kObscure, FlatPicture(3, 700, 0xFFFFFF).handle, {600}));
    EXPECT_TRUE(SameAsReference(kObscure, RandomPicture(5, 700, 9).handle, {515}));
}

TEST(Obscure, Equals_its_reference_at_every_depth) {
    for (const int32_t bits : {1, 4, 8, 32})
        EXPECT_TRUE(SameAsReference(kObscure, RandomPicture(29, 23, 5, bits).handle, {4}));
}

TEST(Obscure, Tiles_cut_off_at_the_edges_average_their_own_pixels_only) {
    Picture source = FlatPicture(5, 3, 0x000000);
    {
        const ImageLock lock(source.handle);
        SetDibPixel(lock.image, 4, 0, 0x0000FF);
        SetDibPixel(lock.image, 4, 2, 0x00FF00);
    }
    const Picture result = Apply(kObscure, source.handle, {2});
    EXPECT_EQ(PixelOf(result.handle, 4, 0), 127u);  // of two pixels
    EXPECT_EQ(PixelOf(result.handle, 4, 1), 127u);
    EXPECT_EQ(PixelOf(result.handle, 4, 2), 0x00FF00u);  // of one
    EXPECT_EQ(PixelOf(result.handle, 3, 0), 0u);
}

TEST(Obscure, Level_two_averages_squares_of_four_pixels) {
    Picture source(CreateDib(2, 2, nullptr, 24));
    {
        const ImageLock lock(source.handle);
        const uint32_t reds[] = {1, 2, 3, 5};
        for (int32_t i = 0; i < 4; ++i) SetDibPixel(lock.image, i % 2, i / 2, reds[i]);
    }
    EXPECT_TRUE(SamePicture(FlatPicture(2, 2, 2).handle, Apply(kObscure, source.handle, {2}).handle));
}

TEST(Obscure, A_picture_of_one_pixel_comes_back_unchanged) {
    const Picture source = FlatPicture(1, 1, 0xABCDEF);
    EXPECT_TRUE(SamePicture(source.handle, Apply(kObscure, source.handle, {2}).handle));
}

TEST(Obscure, A_tile_of_one_colour_keeps_it) {
    const Picture source = FlatPicture(37, 41, 0xFE01C9);
    EXPECT_TRUE(SamePicture(source.handle, Apply(kObscure, source.handle, {8}).handle));
}

TEST(Obscure, A_level_below_one_leaves_the_picture_alone) {
    const Picture source = RandomPicture(9, 9, 1);
    for (const int32_t level : {0, -1, -64})
        EXPECT_EQ(Apply(kObscure, source.handle, {level}).handle, nullptr);
}

TEST(Obscure, Any_setting_and_refused_memory_are_survived) {
    ExpectAnyValueIsSurvived(kObscure, {8});
    ExpectRefusedMemoryIsSurvived(kObscure, RandomPicture(50, 50, 1).handle, {8});
}

}  // namespace
}  // namespace kfx::test
