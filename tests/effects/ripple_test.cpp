// SPDX-License-Identifier: MIT
#include "effects/effects.h"

#include <algorithm>
#include <cmath>

#include "tests/effects/expected_controls.h"
#include "tests/support/effect_checks.h"

namespace kfx::test {
namespace {

// Center X and Y, amplitude, wavelength, phase, energy, dissipate.
const Values kBuiltIn = {100, 100, 2500, 1200, 180, 15, 1};

// Waves so long and of such a phase that their sine is 1 all over: the shift is the amplitude.
constexpr int32_t kEndless = 2000000000;
constexpr int32_t kCrest = 157;

Picture ColumnPicture(int32_t width, int32_t height) {
    Picture picture = FlatPicture(width, height, 0);
    const ImageLock lock(picture.handle);
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x) SetDibPixel(lock.image, x, y, static_cast<uint32_t>(2 * x));
    return picture;
}

TEST(Ripple, Has_these_controls) {
    ExpectControls(
        kRipple, "Ripple", 7409,
        {
            {.id = 142,
             .key = "Style009CenterX",
             .builtIn = 100,
             .text = "0,200,100",
             .caption = "Center X:"},
            {.id = 145,
             .key = "Style009CenterY",
             .builtIn = 100,
             .text = "0,200,100",
             .caption = "Center Y:"},
            {.id = 148,
             .key = "Style009Amplitude",
             .builtIn = 2500,
             .text = "70,8000,2500",
             .caption = "Amplitude:"},
            {.id = 151,
             .key = "Style009Wavelength",
             .builtIn = 1200,
             .text = "400,5000,1200",
             .caption = "Wavelength:"},
            {.id = 154, .key = "Style009Phase", .builtIn = 180, .text = "0,360,180", .caption = "Phase:"},
            {.id = 157, .key = "Style009Energy", .builtIn = 15, .text = "1,100,15", .caption = "Energy:"},
            {.kind = ControlKind::CheckBox,
             .id = 160,
             .key = "Style009Dissipate",
             .builtIn = 1,
             .text = "Dissipate"},
        });
}

TEST(Ripple, Equals_its_reference_on_pictures_of_all_sizes) {
    ExpectReferenceOnTrickyPictures(kRipple, kBuiltIn);
    ExpectReferenceOnTrickyPictures(kRipple, {0, 200, 8000, 5000, 360, 100, 1});
    ExpectReferenceOnTrickyPictures(kRipple, {100, 100, 8000, 400, 180, 15, 0});
    ExpectReferenceOnTrickyPictures(kRipple, {37, 151, 70, 400, 0, 1, 0});
}

TEST(Ripple, Equals_its_reference_at_every_depth) {
    for (const int32_t bits : {1, 4, 8, 32})
        for (const Size& size : {Size{17, 11}, Size{64, 9}})
            EXPECT_TRUE(
                SameAsReference(kRipple, RandomPicture(size.width, size.height, 3, bits).handle, kBuiltIn));
}

TEST(Ripple, Equals_its_reference_outside_the_sliders) {
    const Picture source = RandomPicture(41, 23, 4);
    for (size_t i = 0; i < kBuiltIn.size(); ++i)
        for (const int32_t odd : {0, -1, -777, 100000, INT32_MAX, INT32_MIN}) {
            Values values = kBuiltIn;
            values[i] = odd;
            EXPECT_TRUE(SameAsReference(kRipple, source.handle, values)) << i;
        }
}

TEST(Ripple, The_least_amplitude_mixes_a_pixel_with_its_neighbours_only) {
    const Picture source = RandomPicture(30, 30, 5);
    const Picture result = Apply(kRipple, source.handle, {100, 100, 70, 1200, 180, 15, 0});
    EXPECT_FALSE(SamePicture(source.handle, result.handle));
    for (int32_t y = 1; y < 29; ++y)
        for (int32_t x = 1; x < 29; ++x) {
            uint32_t least = 255, most = 0;
            for (int32_t i = 0; i < 9; ++i) {
                const uint32_t red = RedOf(PixelOf(source.handle, x - 1 + i % 3, y - 1 + i / 3));
                least = std::min(least, red);
                most = std::max(most, red);
            }
            const uint32_t red = RedOf(PixelOf(result.handle, x, y));
            EXPECT_GE(red + 1, least);  // truncated
            EXPECT_LE(red, most);
        }
}

TEST(Ripple, Energy_matters_only_when_waves_dissipate) {
    const Picture source = RandomPicture(30, 20, 6);
    const auto with = [&](int32_t energy, int32_t dissipate) {
        return Apply(kRipple, source.handle, {100, 100, 2500, 1200, 180, energy, dissipate});
    };
    EXPECT_TRUE(SamePicture(with(15, 0).handle, with(90, 0).handle));
    EXPECT_FALSE(SamePicture(with(15, 1).handle, with(90, 1).handle));
}

TEST(Ripple, Beyond_the_lower_right_corners_distance_dissipating_waves_turn_over) {
    // The centre lies half a picture below and to the right: that corner is the nearest one.
    const Picture source = ColumnPicture(100, 100);
    const Picture result = Apply(kRipple, source.handle, {200, 200, 1000, kEndless, kCrest, 100, 1});
    const double far = std::sqrt(2 * 50.0 * 50.0);
    for (const int32_t i : {40, 60, 80}) {
        const double distance = std::sqrt(2.0) * (150 - i);
        ASSERT_GT(distance, far);
        const double shift = 10 * (1 - distance / far);
        ASSERT_LT(shift, 0);
        EXPECT_NEAR(RedOf(PixelOf(result.handle, i, i)), 2 * std::max(0.0, i + shift), 1.01) << i;
    }
}

TEST(Ripple, Centre_zero_lies_half_a_picture_to_the_left_and_above) {
    const Picture source = ColumnPicture(100, 60);
    const Picture result = Apply(kRipple, source.handle, {0, 0, 1000, kEndless, kCrest, 100, 1});
    const double far = std::sqrt(90.0 * 90.0 + 150.0 * 150.0);  // to (100, 60) from (-50, -30)
    for (const int32_t x : {0, 20, 50, 80}) {
        const double shift = 10 * (1 - std::sqrt((x + 50.0) * (x + 50.0) + 35.0 * 35.0) / far);
        EXPECT_NEAR(RedOf(PixelOf(result.handle, x, 5)), 2 * (x + shift), 1.01) << x;
    }
}

TEST(Ripple, Clamped_points_always_find_their_neighbours_so_no_dark_seam_arises) {
    // A neighbour beyond the last column or row would be black, but a point there has no fraction left.
    const Picture result = Apply(kRipple, FlatPicture(50, 40, 0xFFFFFF).handle, kBuiltIn);
    for (int32_t y = 0; y < 40; ++y)
        for (int32_t x = 0; x < 50; ++x)
            EXPECT_GE(RedOf(PixelOf(result.handle, x, y)), 254u) << x << ", " << y;
}

TEST(Ripple, Waves_without_a_length_leave_the_picture_as_it_is) {
    EXPECT_EQ(Apply(kRipple, RandomPicture(9, 9, 7).handle, {100, 100, 2500, 0, 180, 15, 1}).handle, nullptr);
}

TEST(Ripple, One_cache_serves_frames_of_all_sizes) {
    for (size_t i = 0; i < kBuiltIn.size(); ++i) {
        Values others = kBuiltIn;
        others[i] = others[i] ? others[i] - 1 : 1;
        ExpectOneCacheServesAllFrames(kRipple, kBuiltIn, others);
    }
}

TEST(Ripple, Any_value_is_survived) { ExpectAnyValueIsSurvived(kRipple, kBuiltIn); }

TEST(Ripple, Refused_memory_is_survived) {
    ExpectRefusedMemoryIsSurvived(kRipple, RandomPicture(9, 8, 1).handle, kBuiltIn);
}

}  // namespace
}  // namespace kfx::test
