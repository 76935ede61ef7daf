// SPDX-License-Identifier: MIT
#include "effects/effects.h"

#include <vector>

#include "framework/effect_operations.h"
#include "framework/math/elementary.h"
#include "kernels/convolution.h"
#include "kernels/emboss_estimate.h"
#include "tests/effects/expected_controls.h"
#include "tests/support/effect_checks.h"

namespace kfx::test {
namespace {

TEST(Emboss, Has_these_controls) {
    ExpectControls(
        kEmboss, "Emboss", 7400,
        {
            {.id = 100, .key = "Style000Radius", .builtIn = 5, .text = "4,45,5", .caption = "Radius:"},
            {.id = 103, .key = "Style000Depth", .builtIn = 15, .text = "15,50,25", .caption = "Depth:"},
        });
}

TEST(Emboss, Equals_its_reference_on_pictures_of_all_sizes) {
    for (const Values& values : {Values{5, 15}, Values{4, 15}, Values{20, 16}, Values{10, 3}, Values{45, 5}})
        ExpectReferenceOnTrickyPictures(kEmboss, values);
}

TEST(Emboss, Equals_its_reference_under_every_radius_of_the_panel) {
    const Picture random = RandomPicture(47, 31, 6);
    const Picture shaded = ShadedPicture(47, 31, 6);
    for (int32_t radius = 4; radius <= 45; ++radius) {
        EXPECT_TRUE(SameAsReference(kEmboss, random.handle, {radius, 15}));
        EXPECT_TRUE(SameAsReference(kEmboss, shaded.handle, {radius, 24}));
    }
}

TEST(Emboss, Equals_its_reference_at_its_heaviest) {
    EXPECT_TRUE(SameAsReference(kEmboss, RandomPicture(73, 59, 6).handle, {45, 50}));
    EXPECT_TRUE(SameAsReference(kEmboss, ShadedPicture(51, 51, 6).handle, {45, 50}));
    EXPECT_TRUE(SameAsReference(kEmboss, FlatPicture(60, 60, 0x808080).handle, {45, 50}));
}

TEST(Emboss, Equals_its_reference_on_pictures_of_several_strips) {
    EXPECT_TRUE(SameAsReference(kEmboss, RandomPicture(530, 19, 6).handle, {5, 15}));
    EXPECT_TRUE(SameAsReference(kEmboss, ShadedPicture(300, 27, 6).handle, {45, 26}));
}

TEST(Emboss, Equals_its_reference_where_values_lie_on_rounding_boundaries) {
    // At radius 5 one level more at two columns and one row from a pixel moves it by a quarter; such a pair
    // by a half.
    Picture source = FlatPicture(90, 60, 0x808080);
    {
        const ImageLock lock(source.handle);
        for (int32_t y = 5; y < 60; y += 12)
            for (int32_t x = 5; x < 90; x += 12) {
                SetDibPixel(lock.image, x - 1, y, 0x7F7F7F);
                SetDibPixel(lock.image, x + 1, y, 0x818181);
            }
    }
    for (const int32_t radius : {4, 5, 6, 7})
        EXPECT_TRUE(SameAsReference(kEmboss, source.handle, {radius, 15}));
}

TEST(Emboss, Equals_its_reference_beyond_the_panels_range) {
    const Picture source = RandomPicture(23, 21, 3);
    for (const int32_t radius : {0, 1, 2, 3, -5, 1000, INT32_MAX, INT32_MIN})
        for (const int32_t depth : {0, 1, 2, 9, 21, 22, -1, -15, 100000, INT32_MAX, INT32_MIN})
            EXPECT_TRUE(SameAsReference(kEmboss, source.handle, {radius, depth}));
}

TEST(Emboss, Pictures_smaller_than_the_matrix_stay_as_they_are) {
    for (const Size size : {Size{14, 40}, Size{40, 14}, Size{1, 1}}) {
        const Picture source = RandomPicture(size.width, size.height, 2);
        KernelCache cache;
        EXPECT_EQ(Apply(kEmboss, source.handle, {5, 15}).handle, nullptr);
        EXPECT_EQ(ApplyKernel(kEmboss, source.handle, MakeInput({5, 15}, 0, &cache)), source.handle);
    }
    EXPECT_NE(Apply(kEmboss, RandomPicture(15, 15, 2).handle, {5, 15}).handle, nullptr);
}

TEST(Emboss, An_even_depth_makes_the_next_odd_matrix) {
    EXPECT_EQ(Apply(kEmboss, RandomPicture(16, 16, 2).handle, {20, 16}).handle, nullptr);
    const Picture source = RandomPicture(17, 17, 2);
    EXPECT_TRUE(SamePicture(Apply(kEmboss, source.handle, {20, 17}).handle,
                            Apply(kEmboss, source.handle, {20, 16}).handle));
}

TEST(Emboss, The_border_wraps_around) {
    const Picture plain = FlatPicture(40, 40, 0x404040);
    Picture edges = FlatPicture(40, 40, 0x404040);
    {
        const ImageLock lock(edges.handle);
        for (int32_t i = 0; i < 40; ++i) {
            SetDibPixel(lock.image, 0, i, 0xFFFFFF);
            SetDibPixel(lock.image, i, 39, 0xFFFFFF);
        }
    }
    const Picture without = Apply(kEmboss, plain.handle, {20, 15});
    const Picture with = Apply(kEmboss, edges.handle, {20, 15});
    EXPECT_NE(PixelOf(without.handle, 39, 20), PixelOf(with.handle, 39, 20)) << "left edge on the right one";
    EXPECT_NE(PixelOf(without.handle, 20, 0), PixelOf(with.handle, 20, 0)) << "bottom edge on the top one";
    EXPECT_EQ(PixelOf(without.handle, 20, 20), PixelOf(with.handle, 20, 20));
}

TEST(Emboss, The_positive_quadrant_lies_to_the_right_and_above_as_the_picture_is_seen) {
    // Wide bell: a bright square there against one to the lower left. The weights' sum is negative, so the
    // side with positive weights turns the centre dark and the other one turns it bright.
    const auto centre = [](int32_t dx, int32_t dy) {
        Picture source = FlatPicture(41, 41, 0);
        {
            const ImageLock lock(source.handle);
            for (int32_t i = 0; i < 3; ++i)
                for (int32_t j = 0; j < 3; ++j)
                    SetDibPixel(lock.image, 20 + dx * (2 + i), 20 + dy * (2 + j), 0xFFFFFF);
        }
        return PixelOf(Apply(kEmboss, source.handle, {20, 15}).handle, 20, 20);
    };
    EXPECT_EQ(centre(+1, -1), 0u);
    EXPECT_NE(centre(-1, +1), 0u);
    EXPECT_NE(centre(-1, -1), 0u);
}

TEST(Emboss, Any_setting_and_refused_memory_are_survived) {
    ExpectAnyValueIsSurvived(kEmboss, {5, 5});
    ExpectRefusedMemoryIsSurvived(kEmboss, RandomPicture(20, 18, 1).handle, {5, 15});
    ExpectRefusedMemoryIsSurvived(kEmboss, RandomPicture(60, 55, 1).handle, {45, 50});
}

TEST(ConvolveImage, Matrix_rows_run_upwards_as_the_picture_is_seen) {
    const Picture source = RandomPicture(9, 8, 1);
    double matrix[9] = {};
    matrix[7] = 1;  // the last row's middle
    const Picture result(ConvolveImage(source.handle, 3, matrix));
    for (int32_t y = 0; y < 8; ++y)
        for (int32_t x = 0; x < 9; ++x)
            EXPECT_EQ(PixelOf(result.handle, x, y), PixelOf(source.handle, x, (y + 7) % 8));
}

TEST(ConvolveImage, Divides_by_sums_other_than_zero_and_one) {
    const Picture source = FlatPicture(5, 5, 0x0A141E);
    const std::vector<double> threes(9, 3.0);
    EXPECT_TRUE(SamePicture(source.handle, Picture(ConvolveImage(source.handle, 3, threes.data())).handle));
    const double cancelling[9] = {4, 0, 0, 0, 0, 0, 0, 0, -4};
    EXPECT_TRUE(SamePicture(FlatPicture(5, 5, 0).handle,
                            Picture(ConvolveImage(source.handle, 3, cancelling)).handle));
}

TEST(ConvolveImage, Refuses_even_matrices_and_pictures_smaller_than_them) {
    const std::vector<double> matrix(25, 1.0);
    EXPECT_EQ(ConvolveImage(RandomPicture(9, 9, 1).handle, 4, matrix.data()), nullptr);
    EXPECT_EQ(ConvolveImage(RandomPicture(4, 9, 1).handle, 5, matrix.data()), nullptr);
    EXPECT_EQ(ConvolveImage(RandomPicture(9, 4, 1).handle, 5, matrix.data()), nullptr);
    EXPECT_EQ(ConvolveImage(nullptr, 5, matrix.data()), nullptr);
}

TEST(EmbossWithinBound, Takes_true_colour_pictures_that_hold_the_matrix) {
    constexpr int32_t kSide = 5;
    constexpr double kSigma = 2;
    std::vector<double> matrix;
    for (int32_t ky = -2; ky <= 2; ++ky)
        for (int32_t kx = -2; kx <= 2; ++kx) {
            const double weight = 8 * Exp(-(kx * kx + ky * ky) / (kSigma * kSigma));
            matrix.push_back(kx == -ky ? 0 : kx >= 0 && ky >= 0 ? weight : -weight);
        }
    const auto fast = [&](const Picture& source) {
        return Picture(EmbossWithinBound(source.handle, kSide, matrix.data(), kSigma));
    };
    for (const Size size : {Size{5, 5}, Size{40, 5}, Size{5, 40}}) {
        const Picture source = RandomPicture(size.width, size.height, 4);
        const Picture result = fast(source);
        ASSERT_NE(result.handle, nullptr);
        EXPECT_TRUE(
            SamePicture(result.handle, Picture(ConvolveImage(source.handle, kSide, matrix.data())).handle));
    }
    EXPECT_EQ(fast(RandomPicture(4, 9, 4)).handle, nullptr);
    EXPECT_EQ(fast(RandomPicture(9, 4, 4)).handle, nullptr);
    EXPECT_EQ(fast(RandomPicture(9, 9, 4, 8)).handle, nullptr);
    EXPECT_EQ(fast(Picture()).handle, nullptr);
}

// Even slopes: sums lie on a boundary nearly everywhere.
TEST(Emboss, Equals_its_reference_on_slopes_in_strips_of_all_widths) {
    for (const int32_t width : {31, 256, 257, 300}) {
        const Picture source = FlatPicture(width, 45, 0);
        {
            const ImageLock lock(source.handle);
            for (int32_t y = 0; y < 45; ++y)
                for (int32_t x = 0; x < width; ++x) {
                    const auto slope = static_cast<uint32_t>((x + y) / 2 & 255);
                    const auto steep = static_cast<uint32_t>(3 * x - y + 45) & 255;
                    SetDibPixel(lock.image, x, y, Rgb(slope, 255 - slope, steep));
                }
        }
        for (const Values& values :
             {Values{5, 15}, Values{5, 31}, Values{4, 9}, Values{7, 15}, Values{10, 21}, Values{5, 4}})
            EXPECT_TRUE(SameAsReference(kEmboss, source.handle, values))
                << width << ": " << values[0] << ", " << values[1];
    }
}

}  // namespace
}  // namespace kfx::test
