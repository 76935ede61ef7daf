// SPDX-License-Identifier: MIT
#include "effects/effects.h"

#include "kernels/bell_weights.h"
#include "tests/effects/expected_controls.h"
#include "tests/support/effect_checks.h"

namespace kfx::test {
namespace {

// White at (x, y) on black.
Picture Dot(int32_t width, int32_t height, int32_t x, int32_t y) {
    Picture picture = FlatPicture(width, height, 0);
    const ImageLock lock(picture.handle);
    SetDibPixel(lock.image, x, y, 0xFFFFFF);
    return picture;
}

bool Lit(const Picture& picture, int32_t x, int32_t y) { return RedOf(PixelOf(picture.handle, x, y)) > 0; }

TEST(MotionBlur, Has_these_controls) {
    ExpectControls(
        kMotionBlur, "Motion Blur", 7414,
        {
            {.id = 184, .key = "Style014Depth", .builtIn = 25, .text = "5,50,25", .caption = "Depth:"},
            {.id = 187, .key = "Style014Radius", .builtIn = 5, .text = "5,300,5", .caption = "Radius:"},
            {.id = 190, .key = "Style014Angle", .builtIn = 45, .text = "0,359,45", .caption = "Angle:"},
        });
}

TEST(MotionBlur, Equals_its_reference_on_pictures_of_all_sizes) {
    for (const Values& values :
         {Values{25, 5, 45}, Values{5, 20, 0}, Values{50, 40, 200}, Values{25, 9, 301}})
        ExpectReferenceOnTrickyPictures(kMotionBlur, values);
}

TEST(MotionBlur, Equals_its_reference_in_every_direction) {
    const Picture source = RandomPicture(67, 45, 8);
    for (int32_t angle = 0; angle < 360; angle += 15)
        EXPECT_TRUE(SameAsReference(kMotionBlur, source.handle, {20, 12, angle}));
    EXPECT_TRUE(SameAsReference(kMotionBlur, source.handle, {50, 300, 45}));
    EXPECT_TRUE(SameAsReference(kMotionBlur, FlatPicture(67, 45, 0xC86432).handle, {50, 300, 45}));
}

TEST(MotionBlur, Equals_its_reference_where_sums_lie_on_a_level) {
    // Flat as far as the weights count, other colours where they are tiny: each sum is a hair off a whole
    // level.
    Picture source = FlatPicture(300, 40, 0x406080);
    {
        const ImageLock lock(source.handle);
        for (int32_t y = 0; y < 40; ++y)
            for (int32_t x = 0; x < 300; ++x)
                if (x / 100 == 1) SetDibPixel(lock.image, x, y, 0xC0A020);
    }
    for (const int32_t angle : {90, 270, 80, 45})
        EXPECT_TRUE(SameAsReference(kMotionBlur, source.handle, {5, 150, angle}));
    EXPECT_TRUE(SameAsReference(kMotionBlur, source.handle, {5, 150, 90}, 0x406080));
    // A single other pixel leaves two neighbours in doubt rather than a whole block.
    EXPECT_TRUE(SameAsReference(kMotionBlur, Dot(120, 20, 60, 10).handle, {5, 60, 90}, 0));
}

TEST(MotionBlur, Equals_its_reference_where_flat_places_meet_others) {
    // Bars of one colour each, wider than a short smear, with a line of other colours through them; wider
    // than the strips in which short smears work.
    for (const int32_t width : {33, 255, 256, 257, 530}) {
        Picture source = FlatPicture(width, 50, 0xFFFFFF);
        {
            const ImageLock lock(source.handle);
            for (int32_t y = 0; y < 50; ++y)
                for (int32_t x = 0; x < width; ++x)
                    if (x / 40 % 2 == 0)
                        SetDibPixel(lock.image, x, y, static_cast<uint32_t>(x / 40) * 0x1F2B11);
                    else if (y == 25)
                        SetDibPixel(lock.image, x, y, static_cast<uint32_t>(x * 77) & 0xFFFFFF);
        }
        for (const Values& values : {Values{25, 5, 45}, Values{50, 9, 90}, Values{5, 30, 271}})
            EXPECT_TRUE(SameAsReference(kMotionBlur, source.handle, values));
    }
}

TEST(MotionBlur, Equals_its_reference_where_a_flat_picture_meets_the_background) {
    const Picture source = FlatPicture(150, 90, 0x28C8FF);
    for (const int32_t radius : {5, 20, 30, 31, 32, 33, 45, 46, 120})
        for (const int32_t angle : {0, 45, 90, 135, 180, 225, 270, 315, 359})
            EXPECT_TRUE(SameAsReference(kMotionBlur, source.handle, {50, radius, angle}));
    // Far taps carry so little that they decide only on which side of a level a sum lies.
    for (const uint32_t color : {0x28C8FFu, 0x646464u, 0x030201u, 0xFDFEFFu}) {
        const Picture wide = FlatPicture(500, 3, color);
        for (const uint32_t background : {0x000000u, 0xFFFFFFu, 0x656463u})
            EXPECT_TRUE(SameAsReference(kMotionBlur, wide.handle, {25, 150, 90}, background));
    }
}

TEST(MotionBlur, Equals_its_reference_beyond_the_panels_range) {
    const Picture source = RandomPicture(31, 22, 8);
    for (const int32_t depth : {1, -1, -25, 1000, INT32_MAX})
        for (const int32_t radius : {-5, 0, 1, 5, 700})
            for (const int32_t angle : {-45, 400, INT32_MIN})
                EXPECT_TRUE(SameAsReference(kMotionBlur, source.handle, {depth, radius, angle}));
}

// The low parts of these weights are as large as they can be: their sums would not fit the vector code's
// words.
TEST(MotionBlur, Equals_its_reference_with_more_taps_than_vector_code_can_sum) {
    const Picture source = FlatPicture(64, 40, 0xFFFFFF);
    {
        const ImageLock lock(source.handle);
        for (int32_t y = 0; y < 40; ++y)
            for (int32_t x = 0; x < 64; ++x)
                SetDibPixel(lock.image, x, y,
                            0xFFFFFF - static_cast<uint32_t>((7 * x + 5 * y) % 4) * 0x010101);
    }
    for (const int32_t radius : {546, 585})
        EXPECT_TRUE(SameAsReference(kMotionBlur, source.handle, {INT32_MAX, radius, 90}, 0xFFFFFF));
}

TEST(MotionBlur, Radius_five_smears_over_eleven_taps) {
    const Picture result = Apply(kMotionBlur, Dot(40, 9, 20, 4).handle, {50, 5, 90}, 0);
    for (int32_t x = 0; x < 40; ++x) EXPECT_EQ(Lit(result, x, 4), x >= 10 && x <= 20) << x;
}

TEST(MotionBlur, Far_taps_of_a_long_smear_carry_almost_no_weight_at_a_small_depth) {
    double weights[601];
    BuildMotionWeights(601, 5, weights);
    EXPECT_LT(weights[600], 1e-100);
    const Picture result = Apply(kMotionBlur, Dot(400, 3, 399, 1).handle, {5, 300, 90}, 0);
    EXPECT_TRUE(Lit(result, 395, 1));
    EXPECT_FALSE(Lit(result, 300, 1));
}

TEST(MotionBlur, Angle_zero_smears_down_the_column_and_half_a_turn_smears_up) {
    const Picture zero = Apply(kMotionBlur, Dot(9, 40, 4, 20).handle, {50, 5, 0}, 0);
    const Picture half = Apply(kMotionBlur, Dot(9, 40, 4, 20).handle, {50, 5, 180}, 0);
    // The taps lie above the pixel at angle 0, so the dot shows in the pixels below it.
    for (int32_t y = 0; y < 40; ++y) {
        EXPECT_EQ(Lit(zero, 4, y), y >= 20 && y <= 30) << y;
        EXPECT_EQ(Lit(half, 4, y), y >= 10 && y <= 20) << y;
        EXPECT_FALSE(Lit(zero, 3, y));
        EXPECT_FALSE(Lit(half, 5, y));
    }
}

TEST(MotionBlur, Borders_take_on_the_background_by_the_weights_outside) {
    double weights[11];
    BuildMotionWeights(11, 25, weights);
    const Picture result = Apply(kMotionBlur, FlatPicture(30, 5, 0xFFFFFF).handle, {25, 5, 90}, 0);
    double inside = 0;
    for (int32_t x = 29; x > 19; --x) {
        inside += weights[29 - x] * 255;
        EXPECT_EQ(RedOf(PixelOf(result.handle, x, 2)), static_cast<uint32_t>(inside)) << x;
    }
}

TEST(MotionBlur, Without_a_radius_the_taps_grow_until_the_last_weight_rounds_to_nothing) {
    const Picture source = RandomPicture(60, 50, 2);
    for (const int32_t depth : {1, 5, 25, 50, 500}) {
        double weights[300];
        int32_t taps = 3;
        for (int32_t n = 3; n < 300; n += 2) {
            BuildMotionWeights(n, depth, weights);
            if (static_cast<int32_t>(255 * weights[n - 1]) == 0) break;
            taps = n;
        }
        const Picture automatic = Apply(kMotionBlur, source.handle, {depth, 0, 30}, 0x7F7F7F);
        const Picture chosen = Apply(kMotionBlur, source.handle, {depth, (taps - 1) / 2, 30}, 0x7F7F7F);
        EXPECT_TRUE(SamePicture(chosen.handle, automatic.handle)) << depth << ": " << taps << " taps";
    }
}

TEST(MotionBlur, Weights_sum_to_one_and_fall) {
    double weights[31];
    BuildMotionWeights(31, 7, weights);
    double sum = 0;
    for (int i = 0; i < 31; ++i) {
        sum += weights[i];
        if (i) {
            EXPECT_LT(weights[i], weights[i - 1]);
        }
    }
    EXPECT_NEAR(sum, 1, 1e-12);
}

TEST(MotionBlur, A_depth_of_nothing_or_an_endless_radius_leaves_the_picture_alone) {
    const Picture source = RandomPicture(9, 9, 1);
    EXPECT_EQ(Apply(kMotionBlur, source.handle, {0, 5, 45}, 0).handle, nullptr);
    EXPECT_EQ(Apply(kMotionBlur, source.handle, {25, INT32_MAX, 45}, 0).handle, nullptr);
    EXPECT_EQ(Apply(kMotionBlur, RandomPicture(9, 9, 1, 8).handle, {25, 5, 45}, 0).handle, nullptr);
}

TEST(MotionBlur, Any_setting_and_refused_memory_are_survived) {
    ExpectAnyValueIsSurvived(kMotionBlur, {25, 5, 45});
    ExpectRefusedMemoryIsSurvived(kMotionBlur, RandomPicture(30, 20, 1).handle, {25, 5, 45});
    ExpectRefusedMemoryIsSurvived(kMotionBlur, RandomPicture(30, 20, 1).handle, {25, 0, 45});
    ExpectRefusedMemoryIsSurvived(kMotionBlur, RandomPicture(30, 20, 1).handle, {25, 100, 45});
}

}  // namespace
}  // namespace kfx::test
