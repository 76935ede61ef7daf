// SPDX-License-Identifier: MIT
#include "effects/effects.h"

#include <gmock/gmock.h>

#include <cmath>
#include <cstdlib>

#include "kernels/bell_weights.h"
#include "kernels/box_blur.h"
#include "kernels/line_blur.h"
#include "tests/effects/expected_controls.h"
#include "tests/support/effect_checks.h"

namespace kfx::test {
namespace {

TEST(GaussianBlur, Has_these_controls) {
    ExpectControls(
        kGaussianBlur, "Gaussian Blur", 7404,
        {
            {.id = 121, .key = "Style004Radius", .builtIn = 5, .text = "4,45,5", .caption = "Radius:"},
            {.id = 124, .key = "Style004Depth", .builtIn = 15, .text = "15,50,25", .caption = "Depth:"},
        });
}

TEST(GaussianBlur, Equals_its_reference_on_pictures_of_all_sizes) {
    for (const Values& values : {Values{5, 15}, Values{5, 25}, Values{4, 16}, Values{45, 50}, Values{20, 40}})
        ExpectReferenceOnTrickyPictures(kGaussianBlur, values);
}

TEST(GaussianBlur, Equals_its_reference_with_every_number_of_taps) {
    for (int32_t depth = -10; depth <= 60; ++depth)
        EXPECT_TRUE(SameAsReference(kGaussianBlur, RandomPicture(71, 18, 4).handle, {13, depth}));
    // An even number of taps: the lower side is even and smaller than the taps.
    for (const int32_t height : {2, 4, 6, 8, 10})
        EXPECT_TRUE(SameAsReference(kGaussianBlur, RandomPicture(30, height, 4).handle, {45, 50}));
}

TEST(GaussianBlur, Equals_its_reference_beyond_the_panels_range) {
    const Picture source = RandomPicture(41, 33, 3);
    for (const int32_t radius : {0, 1, -5, 1000, INT32_MAX, INT32_MIN})
        for (const int32_t depth : {0, -1, -15, -1000, 150, 195, 300, 100000, INT32_MAX, INT32_MIN})
            EXPECT_TRUE(SameAsReference(kGaussianBlur, source.handle, {radius, depth}));
}

TEST(GaussianBlur, Equals_its_reference_on_colour_indices_and_thirty_two_bits) {
    for (const int32_t bits : {8, 32})
        for (const Size size : {Size{31, 19}, Size{3, 19}, Size{19, 3}, Size{1, 1}})
            EXPECT_TRUE(SameAsReference(kGaussianBlur, RandomPicture(size.width, size.height, 5, bits).handle,
                                        {45, 50}));
}

TEST(GaussianBlur, Pictures_as_wide_as_the_taps_are_gaussian_and_narrower_ones_a_box) {
    // Depth 15 makes 5 taps and a box of 2 pixels to each side, depth 50 makes 11 taps and 8 pixels.
    const struct { int32_t depth, taps; } kCases[] = {{15, 5}, {50, 11}};
    for (const auto& [depth, taps] : kCases) {
        const Picture narrow = RandomPicture(taps - 1, 30, 3);
        EXPECT_TRUE(SamePicture(Picture(BoxBlur(narrow.handle, depth)).handle,
                                Apply(kGaussianBlur, narrow.handle, {5, depth}).handle));
        const Picture wide = RandomPicture(taps, 30, 3);
        EXPECT_FALSE(SamePicture(Picture(BoxBlur(wide.handle, depth)).handle,
                                 Apply(kGaussianBlur, wide.handle, {5, depth}).handle));
    }
    // A white pixel spreads as far as the taps reach.
    Picture dot = FlatPicture(31, 31, 0);
    {
        const ImageLock lock(dot.handle);
        SetDibPixel(lock.image, 15, 15, 0xFFFFFF);
    }
    for (const auto& [depth, taps] : kCases) {
        const Picture blurred = Apply(kGaussianBlur, dot.handle, {45, depth});
        for (int32_t x = 0; x < 31; ++x)
            EXPECT_EQ(PixelOf(blurred.handle, x, 15) != 0, std::abs(x - 15) <= taps / 2) << x;
    }
}

TEST(GaussianBlur, A_low_picture_uses_as_many_taps_as_it_is_high) {
    for (int32_t height = 1; height < 11; ++height)
        EXPECT_TRUE(SameAsReference(kGaussianBlur, ShadedPicture(40, height, 4).handle, {30, 50}));
}

TEST(GaussianBlur, A_flat_picture_comes_back_flat_within_the_rounding) {
    for (const uint32_t grey : {0u, 1u, 100u, 254u, 255u}) {
        const Picture result = Apply(kGaussianBlur, FlatPicture(40, 30, grey * 0x010101).handle, {45, 50});
        for (int32_t y = 0; y < 30; ++y)
            for (int32_t x = 0; x < 40; ++x) {
                const uint32_t pixel = PixelOf(result.handle, x, y);
                EXPECT_NEAR(RedOf(pixel), grey, 1) << x << ", " << y;
                if (x >= 5 && x < 35 && y >= 5 && y < 25) {
                    EXPECT_EQ(pixel, grey * 0x010101) << x << ", " << y;
                }
            }
    }
}

TEST(GaussianBlur, A_line_shorter_than_the_weights_is_left_untouched) {
    float weights[5];
    BuildBlurWeights(5, 0.5f, weights);
    const uint8_t line[4] = {1, 2, 3, 4};
    uint8_t out[4] = {9, 9, 9, 9};
    BlurLine(weights, 5, line, out, 4, 1);
    EXPECT_THAT(out, ::testing::ElementsAre(9, 9, 9, 9));
}

TEST(GaussianBlur, The_ends_of_a_line_add_the_half_before_they_divide) {
    float weights[3];
    BuildBlurWeights(3, 1.0f, weights);
    const uint8_t line[5] = {100, 100, 100, 100, 100};
    uint8_t out[5] = {};
    BlurLine(weights, 3, line, out, 5, 1);
    // (100 * s + 0.5) / s with s about 0.7 is 100.7; a narrower end would come out lighter.
    EXPECT_THAT(out, ::testing::ElementsAre(100, 100, 100, 100, 100));
    const double partial = static_cast<double>(weights[1]) + weights[2];
    EXPECT_GT((100 * partial + 0.5) / partial, 100.5);
}

TEST(GaussianBlur, The_number_below_one_half_rounds_in_single_precision_as_one_half_does_in_double) {
    // Around every boundary, and every small sum in steps.
    for (int32_t i = 0; i < 512; ++i) {
        float sum = static_cast<float>(i) / 2;
        for (int back = 0; back < 20; ++back) sum = std::nextafterf(sum, 0.0f);
        for (int step = 0; step < 40; ++step, sum = std::nextafterf(sum, 1000.0f))
            ASSERT_EQ(static_cast<int32_t>(sum + 0x1.fffffep-2f), static_cast<int32_t>(sum + 0.5)) << sum;
    }
}

TEST(BoxBlur, Needs_a_depth_of_six_and_colours) {
    EXPECT_EQ(BoxBlur(RandomPicture(3, 9, 1).handle, 5), nullptr);
    EXPECT_EQ(BoxBlur(RandomPicture(3, 9, 1, 8).handle, 50), nullptr);
    EXPECT_NE(Picture(BoxBlur(RandomPicture(3, 9, 1).handle, 6)).handle, nullptr);
}

TEST(GaussianBlur, Any_setting_and_refused_memory_are_survived) {
    ExpectAnyValueIsSurvived(kGaussianBlur, {5, 15});
    ExpectRefusedMemoryIsSurvived(kGaussianBlur, RandomPicture(40, 30, 1).handle, {5, 15});
    ExpectRefusedMemoryIsSurvived(kGaussianBlur, RandomPicture(40, 30, 1, 8).handle, {5, 15});
    ExpectRefusedMemoryIsSurvived(kGaussianBlur, RandomPicture(4, 30, 1).handle, {5, 15});
}

}  // namespace
}  // namespace kfx::test
