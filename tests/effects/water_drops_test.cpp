// SPDX-License-Identifier: MIT
#include "effects/effects.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>

#include "tests/effects/expected_controls.h"
#include "tests/support/effect_checks.h"
#include "tests/support/held_clock.h"

namespace kfx::test {
namespace {

struct Offsets {
    int32_t least = 100;
    int32_t most = -100;
};

Offsets OffsetsOf(int32_t aperture) {
    const HeldClock clock(12345);
    const Picture result = Apply(kWaterDrops, CoordinatePicture(200, 200).handle, {aperture});
    Offsets offsets;
    for (int32_t y = 10; y < 190; ++y)
        for (int32_t x = 10; x < 190; ++x) {
            const uint32_t pixel = PixelOf(result.handle, x, y);
            for (const int32_t offset :
                 {static_cast<int32_t>(RedOf(pixel)) - x, static_cast<int32_t>(GreenOf(pixel)) - y}) {
                offsets.least = std::min(offsets.least, offset);
                offsets.most = std::max(offsets.most, offset);
            }
        }
    return offsets;
}

TEST(WaterDrops, Has_these_controls) {
    ExpectControls(
        kWaterDrops, "Water Drops", 7408,
        {
            {.id = 139, .key = "Style008Aperture", .builtIn = 5, .text = "3,12,5", .caption = "Radius:"},
        });
}

TEST(WaterDrops, Equals_its_reference_on_pictures_of_all_sizes) {
    for (const int32_t aperture : {3, 4, 5, 12}) {
        const HeldClock clock(1700000000u + static_cast<uint32_t>(aperture));
        ExpectReferenceOnTrickyPictures(kWaterDrops, {aperture});
    }
}

TEST(WaterDrops, Equals_its_reference_at_every_depth) {
    const HeldClock clock(99);
    for (const int32_t bits : {1, 4, 8, 32})
        for (const Size& size : {Size{17, 11}, Size{64, 9}, Size{1, 20}})
            EXPECT_TRUE(
                SameAsReference(kWaterDrops, RandomPicture(size.width, size.height, 3, bits).handle, {5}));
}

TEST(WaterDrops, Equals_its_reference_for_every_aperture_outside_the_slider) {
    const HeldClock clock(3000000000u);
    const Picture source = RandomPicture(40, 30, 5);
    for (const int32_t aperture :
         {-5, 0,  1,  2,  6,   7,    8,     9,     10,    11,    13,    14,      15,       16,
          17, 31, 32, 33, 100, 1023, 16384, 32767, 32768, 32769, 65537, 1000000, INT32_MAX})
        EXPECT_TRUE(SameAsReference(kWaterDrops, source.handle, {aperture}));
}

TEST(WaterDrops, Odd_apertures_scatter_evenly_and_even_ones_lean_to_the_left_and_up) {
    EXPECT_EQ(OffsetsOf(3).least, -1);
    EXPECT_EQ(OffsetsOf(3).most, 1);
    EXPECT_EQ(OffsetsOf(4).least, -2);
    EXPECT_EQ(OffsetsOf(4).most, 1);
    EXPECT_EQ(OffsetsOf(5).least, -2);
    EXPECT_EQ(OffsetsOf(5).most, 2);
    EXPECT_EQ(OffsetsOf(12).least, -6);
    EXPECT_EQ(OffsetsOf(12).most, 5);
}

TEST(WaterDrops, Pixels_whose_source_lies_outside_keep_their_value_and_never_turn_black) {
    const HeldClock clock(4);
    const Picture result = Apply(kWaterDrops, CoordinatePicture(20, 20).handle, {12});
    int32_t kept = 0;
    for (int32_t y = 0; y < 20; ++y)
        for (int32_t x = 0; x < 20; ++x) {
            const uint32_t pixel = PixelOf(result.handle, x, y);
            EXPECT_EQ(BlueOf(pixel), kCoordinateBlue);
            kept += RedOf(pixel) == static_cast<uint32_t>(x) && GreenOf(pixel) == static_cast<uint32_t>(y);
        }
    EXPECT_GT(kept, 80);  // about a quarter of the places around a border pixel lies outside
}

TEST(WaterDrops, In_a_column_of_one_pixel_only_sideways_sources_are_replaced) {
    // Sources above and below still count, so a picture of one column is scattered, too; one pixel cannot be.
    const HeldClock clock(5);
    const Picture column = CoordinatePicture(1, 60);
    const Picture scattered = Apply(kWaterDrops, column.handle, {5});
    EXPECT_FALSE(SamePicture(column.handle, scattered.handle));
    for (int32_t y = 0; y < 60; ++y) {
        const auto from = static_cast<int32_t>(GreenOf(PixelOf(scattered.handle, 0, y)));
        EXPECT_LE(std::abs(from - y), 2);
    }
    const Picture pixel = CoordinatePicture(1, 1);
    EXPECT_TRUE(SamePicture(pixel.handle, Apply(kWaterDrops, pixel.handle, {5}).handle));
}

TEST(WaterDrops, Frames_of_one_second_scatter_alike_and_others_do_not) {
    const Picture source = RandomPicture(50, 20, 6);
    HoldClock(1000);
    const Picture first = Apply(kWaterDrops, source.handle, {5});
    const Picture second = Apply(kWaterDrops, source.handle, {5});
    HoldClock(1001);  // a build may run across a second: its frames then have the new second's pattern
    const Picture later = Apply(kWaterDrops, source.handle, {5});
    ReleaseClock();
    EXPECT_TRUE(SamePicture(first.handle, second.handle));
    EXPECT_FALSE(SamePicture(first.handle, later.handle));
}

TEST(WaterDrops, A_32_bit_pixel_with_all_bits_set_counts_as_outside) {
    const HeldClock clock(7);
    Picture source = RandomPicture(30, 30, 8, 32);
    {
        const ImageLock lock(source.handle);
        for (int32_t y = 0; y < 30; ++y)
            for (int32_t x = 0; x < 30; ++x)
                SetDibPixel(lock.image, x, y, (x + y) % 2 ? 0xFFFFFFFF : static_cast<uint32_t>(x << 8 | y));
    }
    const Picture result = Apply(kWaterDrops, source.handle, {5});
    for (int32_t y = 0; y < 30; ++y)
        for (int32_t x = 0; x < 30; ++x)
            if ((x + y) % 2 == 0) {
                EXPECT_NE(PixelOf(result.handle, x, y), 0xFFFFFFFF) << x << ", " << y;
            }
    EXPECT_TRUE(SameAsReference(kWaterDrops, source.handle, {5}));
}

TEST(WaterDrops, Any_value_is_survived) { ExpectAnyValueIsSurvived(kWaterDrops, {5}); }

TEST(WaterDrops, Refused_memory_is_survived) {
    const HeldClock clock(9);
    ExpectRefusedMemoryIsSurvived(kWaterDrops, RandomPicture(9, 8, 1).handle, {5});
}

}  // namespace
}  // namespace kfx::test
