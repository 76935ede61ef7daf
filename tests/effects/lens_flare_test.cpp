// SPDX-License-Identifier: MIT
#include "effects/effects.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "framework/cpu.h"
#include "framework/math/elementary.h"
#include "kernels/flare_elements.h"
#include "tests/effects/expected_controls.h"
#include "tests/support/effect_checks.h"

namespace kfx::test {
namespace {

const Values kBuiltIn = {50, 50, 175};

TEST(LensFlare, Has_these_controls) {
    ExpectControls(
        kLensFlare, "Lens Flare", 7401,
        {
            {.id = 106, .key = "Style001CenterX", .builtIn = 50, .text = "1,99,50", .caption = "Center X:"},
            {.id = 109, .key = "Style001CenterY", .builtIn = 50, .text = "1,99,50", .caption = "Center Y:"},
            {.id = 112,
             .key = "Style001Intensity",
             .builtIn = 175,
             .text = "50,300,175",
             .caption = "Depth:"},
        });
}

TEST(LensFlare, Equals_its_reference_on_pictures_of_all_sizes) {
    ExpectReferenceOnTrickyPictures(kLensFlare, kBuiltIn);
    ExpectReferenceOnTrickyPictures(kLensFlare, {20, 30, 300});
    ExpectReferenceOnTrickyPictures(kLensFlare, {99, 1, 50});
}

TEST(LensFlare, Equals_its_reference_on_a_larger_picture) {
    const Picture source = RandomPicture(321, 243, 2);
    EXPECT_TRUE(SameAsReference(kLensFlare, source.handle, {25, 30, 300}));
    EXPECT_TRUE(SameAsReference(kLensFlare, source.handle, {71, 64, 220}));
}

TEST(LensFlare, Equals_its_reference_at_every_depth) {
    for (const int32_t bits : {1, 4, 8, 32})
        EXPECT_TRUE(SameAsReference(kLensFlare, RandomPicture(61, 40, 3, bits).handle, {40, 60, 250}));
}

TEST(LensFlare, Equals_its_reference_outside_the_sliders) {
    const Picture source = RandomPicture(60, 45, 4);
    for (const int32_t odd : {-500, -1, 0, 100, 101, 700, 12345}) {
        EXPECT_TRUE(SameAsReference(kLensFlare, source.handle, {odd, 50, 175}));
        EXPECT_TRUE(SameAsReference(kLensFlare, source.handle, {50, odd, 175}));
        EXPECT_TRUE(SameAsReference(kLensFlare, source.handle, {40, 40, odd}));
    }
}

TEST(LensFlare, With_the_light_in_the_middle_every_element_collapses_onto_the_centre) {
    FlareElement elements[kFlareElements];
    BuildFlareElements(100, 60, 200, 120, 350, elements);
    for (const FlareElement& element : elements) {
        EXPECT_EQ(element.column, 100);
        EXPECT_EQ(element.row, 60);
    }
}

TEST(LensFlare, Elements_stand_along_the_line_from_the_light_through_the_centre) {
    FlareElement elements[kFlareElements];
    BuildFlareElements(11, 91, 101, 77, 100, elements);
    // The picture's centre is (50, 38) in whole pixels, so the line runs by (39, -53).
    EXPECT_EQ(elements[0].column, 76);   // 50 + 39 * 0.6699 = 76.1
    EXPECT_EQ(elements[0].row, 2);       // 38 - 53 * 0.6699 = 2.49
    EXPECT_EQ(elements[10].column, -8);  // 50 - 39 * 1.496 = -8.3, truncated
    EXPECT_EQ(elements[10].row, 117);    // 38 + 53 * 1.496 = 117.3
    EXPECT_EQ(elements[13].column, 90);  // mirrored exactly: 101 - 11
    EXPECT_EQ(elements[13].row, -14);    // 77 - 91
    EXPECT_EQ(elements[0].size, static_cast<float>(2.7));
    EXPECT_EQ(elements[11].size, 50.0f);
    EXPECT_EQ(elements[0].color[2], static_cast<float>(113 / 255.0));
    const FlareKind kinds[] = {FlareKind::Disc, FlareKind::Spot, FlareKind::Halo, FlareKind::Ring};
    const int32_t ends[] = {3, 12, 15, 19};
    for (int32_t i = 0, kind = 0; i < kFlareElements; ++i) {
        if (i == ends[kind]) ++kind;
        EXPECT_EQ(elements[i].kind, kinds[kind]) << i;
    }
}

TEST(LensFlare, Pixels_far_from_every_element_keep_their_value) {
    const Picture source = RandomPicture(200, 100, 5);
    const Picture result = Apply(kLensFlare, source.handle, {50, 50, 50});
    // The scale is 100, the greatest element reaches half of that.
    for (int32_t y = 0; y < 100; ++y)
        for (int32_t x = 0; x < 200; ++x)
            if ((x - 100) * (x - 100) + (y - 50) * (y - 50) > 51 * 51) {
                ASSERT_EQ(PixelOf(result.handle, x, y), PixelOf(source.handle, x, y)) << x << ", " << y;
            }
    EXPECT_NE(PixelOf(result.handle, 100, 50), PixelOf(source.handle, 100, 50));
}

TEST(LensFlare, Indexed_pictures_are_blended_as_if_the_index_were_a_colour) {
    Picture source(CreateDib(20, 20, nullptr, 8));
    {
        const ImageLock lock(source.handle);
        for (int32_t i = 0; i < 400; ++i) SetDibPixel(lock.image, i % 20, i / 20, 3);
    }
    const Picture result = Apply(kLensFlare, source.handle, kBuiltIn);
    // Index 3 is taken for a red of 3; what comes out as red becomes the index.
    EXPECT_GT(PixelOf(result.handle, 10, 10), 200u);
    EXPECT_LT(PixelOf(result.handle, 10, 10), 256u);
}

TEST(LensFlare, The_top_byte_of_a_32_bit_pixel_is_zero_wherever_something_was_painted) {
    Picture source(CreateDib(200, 100, nullptr, 32));
    {
        const ImageLock lock(source.handle);
        for (int32_t y = 0; y < 100; ++y)
            for (int32_t x = 0; x < 200; ++x) SetDibPixel(lock.image, x, y, 0xAB102030);
    }
    const Picture result = Apply(kLensFlare, source.handle, {50, 50, 50});
    EXPECT_EQ(PixelOf(result.handle, 100, 50) >> 24, 0u);
    EXPECT_EQ(PixelOf(result.handle, 60, 50) >> 24, 0u);
    EXPECT_EQ(PixelOf(result.handle, 0, 0), 0xAB102030u);
}

TEST(LensFlare, A_negative_strength_darkens_and_wraps_through_the_mask) {
    const Picture picture = FlatPicture(1, 1, Rgb(100, 200, 0));
    const ImageLock lock(picture.handle);
    const float white[] = {1, 1, 0.5f};
    BrightenPixel(lock.image, -1, white, 0, 0);
    // 100 - 155 = -55 and 0 - 127.5, both beyond the low byte's range; 200 - 55 is not.
    EXPECT_EQ(GetDibPixel(lock.image, 0, 0), Rgb(201, 145, 129));
}

TEST(LensFlare, A_halo_is_brightest_near_its_rim_and_fades_to_nothing_at_its_centre) {
    const float white[] = {1, 1, 1};
    const Picture picture = FlatPicture(101, 101, 0);
    const ImageLock lock(picture.handle);
    std::vector<float> strengths(101);
    PaintFlareSpot(lock.image, {white, 50.0, 50, 50, FlareKind::Halo}, strengths.data());
    EXPECT_EQ(GetDibPixel(lock.image, 50, 50), 0u);
    EXPECT_EQ(RedOf(GetDibPixel(lock.image, 25, 50)), 127u);  // t = 25 / 6: 1 - 0.5
    EXPECT_EQ(RedOf(GetDibPixel(lock.image, 6, 50)), 255u);   // t = 1
    EXPECT_EQ(RedOf(GetDibPixel(lock.image, 3, 50)), 127u);   // t = 3 / 6
    EXPECT_EQ(GetDibPixel(lock.image, 0, 50), 0u);
}

TEST(LensFlare, What_stands_beside_a_colour_is_none_of_its_shares) {
    const float shares[] = {1, 0, 0, 0, 1};
    const Picture picture = FlatPicture(31, 31, 0);
    const ImageLock lock(picture.handle);
    std::vector<float> strengths(31);
    PaintFlareSpot(lock.image, {shares + 1, 14.0, 15, 15, FlareKind::Spot}, strengths.data());
    EXPECT_TRUE(SamePicture(picture.handle, FlatPicture(31, 31, 0).handle));
}

TEST(LensFlare, Square_roots_of_whole_sums_are_the_distances) {
    int32_t differences = 0;
    for (int32_t dx = 0; dx < 4200; ++dx)
        for (int32_t dy = 0; dy <= dx; ++dy)
            differences += Hypot(dx, dy) != std::sqrt(static_cast<double>(dx * dx + dy * dy));
    EXPECT_EQ(differences, 0);
}

TEST(LensFlare, Fast_strengths_equal_those_of_the_distances) {
    std::mt19937 random(3);
    std::vector<float> exact(500), fast(500);
    for (int32_t i = 0; i < 4000; ++i) {
        const auto kind = static_cast<FlareKind>(1 + i % 7);
        const double radius = static_cast<float>(1 + static_cast<double>(random() % 300000) / 150);
        // Most runs pass near the rim, where the strengths are.
        const auto dy = static_cast<int32_t>(random() % static_cast<uint32_t>(radius + 2));
        const auto rim = static_cast<int32_t>(std::sqrt(std::max(0.0, radius * radius - double(dy) * dy)));
        // Others lie beyond the near range.
        const int32_t from = i % 11 ? rim - static_cast<int32_t>(random() % 500) : (1 << 26) - 250;
        const FlareRun run = {kind, radius, i % 2 ? from : -from - 499, i % 3 ? dy : -dy, 500};
        FillStrengths(run, exact.data());
        for (const bool avx2 : {true, false}) {
            AllowAvx2(avx2);
            FillStrengthsFast(run, fast.data());
            for (size_t k = 0; k < 500; ++k)
                ASSERT_EQ(std::max(exact[k], 0.0f), fast[k]) << (1 + i % 7) << ", " << radius << ", " << k;
        }
        AllowAvx2(true);
    }
}

TEST(LensFlare, Fast_strengths_equal_those_of_the_distances_right_beside_a_rim) {
    // Where a strength is next to nothing it has so many places that the distance's last one tells.
    std::mt19937 random(4);
    for (int32_t i = 0; i < 200000; ++i) {
        const auto dx = static_cast<int32_t>(random() % 4000);
        const auto dy = static_cast<int32_t>(1 + random() % 4000);
        const auto kind = static_cast<FlareKind>(1 + i % 7);
        // As elements hold it: the next radius in single precision that reaches the pixel.
        const auto distance = static_cast<float>(Hypot(dx, dy));
        const FlareRun run = {kind, double{std::nextafterf(distance, 1e9f)}, dx, dy, 1};
        float exact, fast;
        FillStrengths(run, &exact);
        FillStrengthsFast(run, &fast);
        ASSERT_EQ(std::max(exact, 0.0f), fast) << (1 + i % 7) << ": " << dx << ", " << dy;
    }
}

TEST(LensFlare, A_flare_smaller_than_a_pixel_paints_nothing) {
    const Picture source = RandomPicture(1, 1, 6);
    EXPECT_TRUE(SamePicture(source.handle, Apply(kLensFlare, source.handle, {50, 50, 50}).handle));
    const Picture larger = RandomPicture(40, 30, 7);
    EXPECT_TRUE(SamePicture(larger.handle, Apply(kLensFlare, larger.handle, {50, 50, -200}).handle));
}

TEST(LensFlare, Any_value_is_survived) { ExpectAnyValueIsSurvived(kLensFlare, kBuiltIn); }

TEST(LensFlare, Refused_memory_is_survived) {
    ExpectRefusedMemoryIsSurvived(kLensFlare, RandomPicture(9, 8, 1).handle, kBuiltIn);
}

}  // namespace
}  // namespace kfx::test
