// SPDX-License-Identifier: MIT
#include "effects/effects.h"

#include <cmath>

#include "kernels/bilinear_sampler.h"
#include "tests/effects/expected_controls.h"
#include "tests/support/effect_checks.h"

namespace kfx::test {
namespace {

TEST(Implode, Has_these_controls) {
    ExpectControls(
        kImplode, "Implode", 7417,
        {
            {.id = 196, .key = "Style017Radius", .builtIn = 50, .text = "1,100,50", .caption = "Radius:"},
            {.id = 199, .key = "Style017CenterX", .builtIn = 50, .text = "10,90,50", .caption = "Center X:"},
            {.id = 202, .key = "Style017CenterY", .builtIn = 50, .text = "10,90,50", .caption = "Center Y:"},
        });
}

TEST(Implode, Equals_its_reference_on_pictures_of_all_sizes) {
    ExpectReferenceOnTrickyPictures(kImplode, {50, 50, 50});
    ExpectReferenceOnTrickyPictures(kImplode, {100, 30, 70});
    ExpectReferenceOnTrickyPictures(kImplode, {1, 90, 10});
}

// Large enough for polynomials, with sides that differ up to a thousandfold, and with regions that reach
// beyond the picture.
TEST(Implode, Equals_its_reference_on_long_pictures_and_off_their_middle) {
    const Picture sources[] = {RandomPicture(2000, 3, 1), RandomPicture(3, 2000, 2),
                               RandomPicture(160, 120, 3)};
    for (const Picture& source : sources)
        for (const int32_t x : {50, 90})
            for (const int32_t y : {50, 85}) {
                EXPECT_TRUE(SameAsReference(kImplode, source.handle, {60, x, y})) << x << ", " << y;
                EXPECT_TRUE(SameAsReference(kExplode, source.handle, {60, x, y})) << x << ", " << y;
            }
}

TEST(Implode, Equals_its_reference_outside_the_sliders) {
    const Picture sources[] = {RandomPicture(23, 17, 1), RandomPicture(17, 23, 2)};
    for (const Picture& source : sources)
        for (const int32_t odd : {0, -1, -50, 150, 1000, INT32_MAX, INT32_MIN}) {
            EXPECT_TRUE(SameAsReference(kImplode, source.handle, {odd, 50, 50}));
            EXPECT_TRUE(SameAsReference(kImplode, source.handle, {50, odd, 50}));
            EXPECT_TRUE(SameAsReference(kImplode, source.handle, {50, 50, odd}));
            EXPECT_TRUE(SameAsReference(kExplode, source.handle, {odd, 50, 50}));
            EXPECT_TRUE(SameAsReference(kExplode, source.handle, {50, odd, odd}));
        }
}

TEST(Implode, Centred_in_a_square_the_region_is_the_inscribed_circle) {
    const Picture source = RandomPicture(50, 50, 3);
    const Picture result = Apply(kImplode, source.handle, {50, 50, 50});
    int32_t changed = 0;
    for (int32_t y = 0; y < 50; ++y)
        for (int32_t x = 0; x < 50; ++x) {
            const bool inside = (x - 25) * (x - 25) + (y - 25) * (y - 25) < 625;
            const bool same = PixelOf(result.handle, x, y) == PixelOf(source.handle, x, y);
            if (!inside) {
                EXPECT_TRUE(same) << x << ", " << y;
            }
            changed += !same;
        }
    EXPECT_GT(changed, 1900);  // of the 1961 pixels of the circle
}

TEST(Implode, Centre_at_ten_percent_of_a_wide_picture_gives_a_region_of_a_tenth_of_the_width) {
    const Picture source = RandomPicture(200, 100, 4);
    const Picture result = Apply(kImplode, source.handle, {50, 10, 50});
    for (int32_t y = 0; y < 100; ++y)
        for (int32_t x = 0; x < 200; ++x) {
            const int32_t square = (x - 20) * (x - 20) + 4 * (y - 50) * (y - 50);
            if (square >= 400) {
                ASSERT_EQ(PixelOf(result.handle, x, y), PixelOf(source.handle, x, y));
            }
        }
    EXPECT_NE(PixelOf(result.handle, 1, 50), PixelOf(source.handle, 1, 50));
    EXPECT_NE(PixelOf(result.handle, 39, 50), PixelOf(source.handle, 39, 50));
}

TEST(Implode, The_centre_pixel_samples_its_own_place) {
    const Picture source = RandomPicture(40, 40, 5);
    const ImageLock lock(source.handle);
    const uint32_t own = SampleBilinear(lock.image, 20, 20, 0);
    EXPECT_EQ(PixelOf(Apply(kImplode, source.handle, {100, 50, 50}).handle, 20, 20), own);
    EXPECT_EQ(PixelOf(Apply(kExplode, source.handle, {100, 50, 50}).handle, 20, 20), own);
}

TEST(Implode, Full_strength_half_way_out_samples_at_the_root_of_two_times_the_distance) {
    const Picture result = Apply(kImplode, CoordinatePicture(100, 100, 2).handle, {100, 50, 50});
    const double place = 50 - 25 * std::sqrt(2.0) + 0.5;  // the sampler looks half a pixel to the right
    EXPECT_NEAR(RedOf(PixelOf(result.handle, 25, 50)), 2 * place, 0.51);
    EXPECT_EQ(GreenOf(PixelOf(result.handle, 25, 50)), 101u);
}

TEST(Implode, Points_sampled_outside_take_the_background) {
    const Picture source = RandomPicture(100, 100, 6);
    // The region reaches 50 pixels up from a centre 10 pixels below the top.
    const Picture result = Apply(kImplode, source.handle, {100, 50, 10}, 0x123456);
    EXPECT_EQ(PixelOf(result.handle, 50, 0), 0x123456u);
}

TEST(Implode, One_cache_serves_frames_of_all_sizes) {
    for (const Values& others : {Values{51, 40, 60}, Values{50, 41, 60}, Values{50, 40, 61}}) {
        ExpectOneCacheServesAllFrames(kImplode, {50, 40, 60}, others);
        ExpectOneCacheServesAllFrames(kExplode, {50, 40, 60}, others);
    }
}

TEST(Implode, Any_value_is_survived) { ExpectAnyValueIsSurvived(kImplode, {50, 50, 50}); }

TEST(Implode, Refused_memory_is_survived) {
    ExpectRefusedMemoryIsSurvived(kImplode, RandomPicture(9, 8, 1).handle, {50, 50, 50});
}

TEST(Explode, Has_these_controls) {
    ExpectControls(
        kExplode, "Explode", 7418,
        {
            {.id = 205, .key = "Style018Radius", .builtIn = 50, .text = "1,100,50", .caption = "Radius:"},
            {.id = 208, .key = "Style018CenterX", .builtIn = 50, .text = "10,90,50", .caption = "Center X:"},
            {.id = 211, .key = "Style018CenterY", .builtIn = 50, .text = "10,90,50", .caption = "Center Y:"},
        });
}

TEST(Explode, Equals_its_reference_on_pictures_of_all_sizes) {
    ExpectReferenceOnTrickyPictures(kExplode, {50, 50, 50});
    ExpectReferenceOnTrickyPictures(kExplode, {100, 30, 70});
    ExpectReferenceOnTrickyPictures(kExplode, {1, 10, 90});
}

TEST(Explode, Full_strength_half_way_out_samples_at_seven_tenths_of_the_distance) {
    const Picture result = Apply(kExplode, CoordinatePicture(100, 100, 2).handle, {100, 50, 50});
    const double place = 50 - 25 * std::sqrt(0.5) + 0.5;
    EXPECT_NEAR(RedOf(PixelOf(result.handle, 25, 50)), 2 * place, 0.51);
    EXPECT_EQ(GreenOf(PixelOf(result.handle, 25, 50)), 101u);
}

TEST(Explode, Outside_the_region_the_picture_stays_and_its_rim_samples_its_own_place) {
    const Picture source = CoordinatePicture(100, 100, 2);
    const Picture result = Apply(kExplode, source.handle, {50, 50, 50});
    for (int32_t y = 0; y < 100; ++y)
        for (int32_t x = 0; x < 100; ++x)
            if ((x - 50) * (x - 50) + (y - 50) * (y - 50) >= 2500) {
                ASSERT_EQ(PixelOf(result.handle, x, y), PixelOf(source.handle, x, y)) << x << ", " << y;
            }
    // One pixel inside the rim the factor is 1 to four places.
    EXPECT_EQ(PixelOf(result.handle, 1, 50), Rgb(3, 101, kCoordinateBlue));
}

TEST(Explode, Any_value_is_survived) { ExpectAnyValueIsSurvived(kExplode, {50, 50, 50}); }

TEST(Explode, Refused_memory_is_survived) {
    ExpectRefusedMemoryIsSurvived(kExplode, RandomPicture(8, 9, 1).handle, {50, 50, 50});
}

}  // namespace
}  // namespace kfx::test
