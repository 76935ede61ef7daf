// SPDX-License-Identifier: MIT
#include "effects/effects.h"

#include <cstdlib>

#include "tests/effects/expected_controls.h"
#include "tests/support/effect_checks.h"

namespace kfx::test {
namespace {

uint32_t MeanOfFour(ImageHandle image, int32_t x, int32_t y, int shift) {
    uint32_t sum = 0;
    for (int32_t i = 0; i < 4; ++i) sum += PixelOf(image, x + i % 2, y + i / 2) >> shift & 255;
    return (sum + 2) / 4;
}

TEST(Swirl, Has_these_controls) {
    ExpectControls(
        kSwirl, "Swirl", 7415,
        {
            {.id = 193, .key = "Style015Angle", .builtIn = 1485, .text = "0,2880,45", .caption = "Angle:"},
        });
}

TEST(Swirl, Equals_its_reference_on_pictures_of_all_sizes) {
    for (const int32_t position : {1485, 0, 1440, 2880, 1400})
        ExpectReferenceOnTrickyPictures(kSwirl, {position});
}

// Large enough for polynomials, with sides that differ up to a thousandfold.
TEST(Swirl, Equals_its_reference_on_long_pictures) {
    const Picture sources[] = {RandomPicture(2000, 3, 1), RandomPicture(3, 2000, 2),
                               RandomPicture(160, 120, 3)};
    for (const Picture& source : sources)
        for (const int32_t position : {1485, 2880})
            EXPECT_TRUE(SameAsReference(kSwirl, source.handle, {position})) << position;
}

TEST(Swirl, Position_1440_leaves_the_outside_identical_and_blends_the_inside_by_half_a_pixel) {
    const Picture source = ShadedPicture(60, 60, 3);
    const Picture result = Apply(kSwirl, source.handle, {1440});
    for (int32_t y = 0; y < 59; ++y) {
        for (int32_t x = 0; x < 59; ++x) {
            const int32_t square = (x - 30) * (x - 30) + (y - 30) * (y - 30);
            if (square >= 900) {
                ASSERT_EQ(PixelOf(result.handle, x, y), PixelOf(source.handle, x, y)) << x << ", " << y;
                continue;
            }
            for (int shift = 0; shift < 24; shift += 8) {
                const auto mean = static_cast<int>(MeanOfFour(source.handle, x, y, shift));
                ASSERT_LE(std::abs(static_cast<int>(PixelOf(result.handle, x, y) >> shift & 255) - mean), 1)
                    << x << ", " << y;
            }
        }
    }
}

TEST(Swirl, Both_ends_turn_four_times_at_the_centre_in_opposite_directions) {
    // Half way out a quarter of the four turns is left, one full turn: the picture as it stands.
    const Picture source = ShadedPicture(400, 400, 5);
    const Picture left = Apply(kSwirl, source.handle, {0});
    const Picture right = Apply(kSwirl, source.handle, {2880});
    const Picture still = Apply(kSwirl, source.handle, {1440});
    EXPECT_FALSE(SamePicture(left.handle, right.handle));
    for (const Picture* turned : {&left, &right}) {
        for (const int32_t x : {100, 300}) {
            for (int shift = 0; shift < 24; shift += 8) {
                const auto a = static_cast<int>(PixelOf(turned->handle, x, 200) >> shift & 255);
                const auto b = static_cast<int>(PixelOf(still.handle, x, 200) >> shift & 255);
                EXPECT_LE(std::abs(a - b), 1) << x;
            }
        }
    }
}

TEST(Swirl, In_a_square_the_circle_touches_all_edges_and_the_corners_stay) {
    const Picture source = RandomPicture(64, 64, 7);
    const Picture result = Apply(kSwirl, source.handle, {1440 + 90});
    for (const int32_t x : {0, 1, 8, 55, 62, 63})
        for (const int32_t y : {0, 1, 62, 63})
            EXPECT_EQ(PixelOf(result.handle, x, y), PixelOf(source.handle, x, y)) << x << ", " << y;
    EXPECT_NE(PixelOf(result.handle, 1, 32), PixelOf(source.handle, 1, 32));
    EXPECT_NE(PixelOf(result.handle, 63, 32), PixelOf(source.handle, 63, 32));
    EXPECT_NE(PixelOf(result.handle, 32, 1), PixelOf(source.handle, 32, 1));
    EXPECT_NE(PixelOf(result.handle, 32, 63), PixelOf(source.handle, 32, 63));
}

TEST(Swirl, In_a_wide_picture_the_ellipse_touches_all_edges) {
    const Picture source = RandomPicture(200, 100, 8);
    const Picture result = Apply(kSwirl, source.handle, {1440 + 90});
    EXPECT_EQ(PixelOf(result.handle, 2, 2), PixelOf(source.handle, 2, 2));
    EXPECT_EQ(PixelOf(result.handle, 20, 15), PixelOf(source.handle, 20, 15));
    EXPECT_EQ(PixelOf(result.handle, 0, 50), PixelOf(source.handle, 0, 50));  // on the rim
    EXPECT_NE(PixelOf(result.handle, 1, 50), PixelOf(source.handle, 1, 50));
    EXPECT_NE(PixelOf(result.handle, 199, 50), PixelOf(source.handle, 199, 50));
    EXPECT_NE(PixelOf(result.handle, 100, 1), PixelOf(source.handle, 100, 1));
    EXPECT_NE(PixelOf(result.handle, 100, 99), PixelOf(source.handle, 100, 99));
}

TEST(Swirl, A_position_outside_the_slider_turns_farther_and_wraps_in_32_bits) {
    for (const int32_t position : {-100000, 100000, INT32_MAX, INT32_MIN, INT32_MIN + 1439})
        EXPECT_TRUE(SameAsReference(kSwirl, ShadedPicture(31, 20, 9).handle, {position}));
}

TEST(Swirl, One_cache_serves_frames_of_all_sizes) { ExpectOneCacheServesAllFrames(kSwirl, {1485}, {1500}); }

TEST(Swirl, Any_value_is_survived) { ExpectAnyValueIsSurvived(kSwirl, {1485}); }

TEST(Swirl, Refused_memory_is_survived) {
    ExpectRefusedMemoryIsSurvived(kSwirl, RandomPicture(9, 8, 1).handle, {1485});
}

TEST(Swirl, Another_depth_than_24_bits_is_left_alone) {
    EXPECT_EQ(Apply(kSwirl, RandomPicture(9, 8, 1, 8).handle, {1485}).handle, nullptr);
}

}  // namespace
}  // namespace kfx::test
