// SPDX-License-Identifier: MIT
#include "effects/effects.h"

#include "tests/effects/expected_controls.h"
#include "tests/support/effect_checks.h"

namespace kfx::test {
namespace {

Picture TurnedByHalf(ImageHandle source) {
    const ImageLock from(source);
    Picture turned(CreateLike(from.image));
    const ImageLock to(turned.handle);
    for (int32_t y = 0; y < from.image->height; ++y)
        for (int32_t x = 0; x < from.image->width; ++x)
            SetDibPixel(to.image, from.image->width - 1 - x, from.image->height - 1 - y,
                        GetDibPixel(from.image, x, y));
    return turned;
}

TEST(RadialBlur, Has_these_controls) {
    ExpectControls(
        kRadialBlur, "Radial Blur", 7403,
        {
            {.id = 118, .key = "Style003Angle", .builtIn = 5, .text = "1,45,5", .caption = "Angle:"},
        });
}

TEST(RadialBlur, Equals_its_reference_on_pictures_of_all_sizes) {
    for (const int32_t angle : {1, 5, 17, 45}) ExpectReferenceOnTrickyPictures(kRadialBlur, {angle});
}

TEST(RadialBlur, Equals_its_reference_on_a_larger_picture) {
    EXPECT_TRUE(SameAsReference(kRadialBlur, ShadedPicture(301, 222, 1).handle, {5}));
    EXPECT_TRUE(SameAsReference(kRadialBlur, RandomPicture(222, 301, 2).handle, {45}));
}

TEST(RadialBlur, Equals_its_reference_beyond_the_panels_range) {
    const Picture source = RandomPicture(50, 37, 3);
    for (const int32_t angle : {0, -1, -5, -10, -45, 90, 360, 361, -360, -400, INT32_MAX, INT32_MIN})
        EXPECT_TRUE(SameAsReference(kRadialBlur, source.handle, {angle}));
}

TEST(RadialBlur, Equals_its_reference_at_every_depth) {
    for (const int32_t bits : {1, 4, 8, 32})
        EXPECT_TRUE(SameAsReference(kRadialBlur, RandomPicture(29, 23, 5, bits).handle, {20}));
}

TEST(RadialBlur, The_centre_of_even_sides_keeps_its_colour) {
    const Picture source = RandomPicture(40, 30, 3);
    // Whatever was blurred before: all samples of the centre are the centre.
    EXPECT_EQ(PixelOf(Apply(kRadialBlur, source.handle, {45}).handle, 20, 15),
              PixelOf(source.handle, 20, 15));
}

TEST(RadialBlur, Angle_one_averages_two_samples_half_a_degree_to_either_side) {
    // On a hundred pixels half a degree never leaves the pixel, on two hundred the corner's two samples are
    // its neighbours; a third one between them would be the corner itself.
    const Picture small = RandomPicture(100, 100, 1);
    EXPECT_TRUE(SamePicture(small.handle, Apply(kRadialBlur, small.handle, {1}).handle));
    Picture large = FlatPicture(200, 200, 0);
    {
        const ImageLock lock(large.handle);
        SetDibPixel(lock.image, 1, 0, 0xFFFFFF);
    }
    EXPECT_EQ(PixelOf(Apply(kRadialBlur, large.handle, {1}).handle, 0, 0), 0x7F7F7Fu);
}

TEST(RadialBlur, Edges_whose_arcs_leave_the_picture_take_on_the_background) {
    const Picture source = FlatPicture(60, 40, 0xFFFFFF);
    const Picture result = Apply(kRadialBlur, source.handle, {45}, 0x00FF00);
    const uint32_t corner = PixelOf(result.handle, 0, 0);
    EXPECT_LT(RedOf(corner), 255u);
    EXPECT_EQ(GreenOf(corner), 255u);
    EXPECT_LT(BlueOf(corner), 255u);
    EXPECT_EQ(PixelOf(result.handle, 30, 20), 0xFFFFFFu);
}

TEST(RadialBlur, A_pixel_of_thirty_two_set_bits_counts_as_outside) {
    Picture source(CreateDib(20, 20, nullptr, 0));
    {
        const ImageLock lock(source.handle);
        for (int32_t y = 0; y < 20; ++y)
            for (int32_t x = 0; x < 20; ++x) SetDibPixel(lock.image, x, y, 0xFFFFFFFF);
    }
    const Picture result = Apply(kRadialBlur, source.handle, {5}, 0x102030);
    EXPECT_EQ(PixelOf(result.handle, 10, 10), 0x102030u);
    EXPECT_EQ(PixelOf(result.handle, 3, 4), 0x102030u);
}

TEST(RadialBlur, Pixels_already_blurred_feed_later_ones) {
    const Picture source = RandomPicture(40, 40, 4);
    const Picture straight = Apply(kRadialBlur, source.handle, {30});
    const Picture turned = TurnedByHalf(Apply(kRadialBlur, TurnedByHalf(source.handle).handle, {30}).handle);
    EXPECT_FALSE(SamePicture(straight.handle, turned.handle)) << "the order of the pixels left no trace";
}

TEST(RadialBlur, Any_setting_and_refused_memory_are_survived) {
    ExpectAnyValueIsSurvived(kRadialBlur, {5});
    ExpectRefusedMemoryIsSurvived(kRadialBlur, RandomPicture(50, 50, 1).handle, {5});
}

}  // namespace
}  // namespace kfx::test
