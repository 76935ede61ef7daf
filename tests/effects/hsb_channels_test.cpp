// SPDX-License-Identifier: MIT
#include "effects/effects.h"

#include <iterator>
#include <string>

#include "framework/cpu.h"
#include "framework/memory_guards.h"
#include "kernels/hsb_shift.h"
#include "tests/effects/expected_controls.h"
#include "tests/support/effect_checks.h"

namespace kfx::test {
namespace {

// Hue, saturation, brightness, HSB on, channel pattern, channels on, invert.
const Values kBuiltIn = {180, 100, 100, 1, 0, 0, 0};

uint32_t Adjusted(uint32_t color, const Values& values) {
    return PixelOf(Apply(kHsbChannels, FlatPicture(1, 1, color).handle, values).handle, 0, 0);
}

TEST(HsbChannels, Has_these_controls) {
    ExpectControls(
        kHsbChannels, "HSB and Channels", 7410,
        {
            {.id = 161, .key = "Style010Hue", .builtIn = 180, .text = "0,360,180", .caption = "Hue:"},
            {.id = 164, .key = "Style010Sat", .builtIn = 100, .text = "0,200,100", .caption = "Saturation:"},
            {.id = 167, .key = "Style010Bri", .builtIn = 100, .text = "0,200,100", .caption = "Brightness:"},
            {.kind = ControlKind::CheckBox,
             .id = 170,
             .key = "Style010HSBEnable",
             .builtIn = 1,
             .text = "Enable HSB"},
            {.kind = ControlKind::List,
             .id = 172,
             .key = "Style010ChannelsOption",
             .builtIn = 0,
             .text = "Red - Blue;Red - Green;Green - Blue;Left 1;Left 2;Right 1;Right 2",
             .caption = "Channels:"},
            {.kind = ControlKind::CheckBox,
             .id = 174,
             .key = "Style010ChannelsEnable",
             .builtIn = 0,
             .text = "Enable channels"},
            {.kind = ControlKind::SliderBox,
             .id = 171,
             .key = "Style010InvertColors",
             .builtIn = 0,
             .text = "Invert colors"},
        });
}

TEST(HsbChannels, Equals_its_reference_on_pictures_of_all_sizes) {
    ExpectReferenceOnTrickyPictures(kHsbChannels, kBuiltIn);
    ExpectReferenceOnTrickyPictures(kHsbChannels, {200, 140, 120, 1, 3, 1, 1});
    ExpectReferenceOnTrickyPictures(kHsbChannels, {360, 100, 100, 1, 0, 0, 0});
    ExpectReferenceOnTrickyPictures(kHsbChannels, {0, 200, 200, 1, 0, 0, 1});
    ExpectReferenceOnTrickyPictures(kHsbChannels, {77, 0, 33, 1, 6, 1, 0});
}

TEST(HsbChannels, Equals_its_reference_for_every_hue_saturation_and_brightness) {
    const Picture source = RandomPicture(211, 5, 2);
    for (int32_t i = 0; i <= 360; i += 7)
        ASSERT_TRUE(SameAsReference(kHsbChannels, source.handle, {i, 200 - i / 2, 130, 1, 0, 0, 0}));
    for (int32_t i = 0; i <= 200; i += 3)
        ASSERT_TRUE(SameAsReference(kHsbChannels, source.handle, {180, 100, i, 1, 0, 0, 0}));
    for (int32_t i = 0; i <= 200; i += 3)
        ASSERT_TRUE(SameAsReference(kHsbChannels, source.handle, {180, i, 100, 1, 0, 0, 0}));
}

TEST(HsbChannels, Equals_its_reference_on_greys_and_pure_colours) {
    // Equal channels, and hues right on the borders of sectors.
    Picture source = FlatPicture(256, 12, 0);
    {
        const ImageLock lock(source.handle);
        for (int32_t x = 0; x < 256; ++x)
            for (int32_t y = 0; y < 12; ++y) {
                const auto c = static_cast<uint32_t>(x);
                const uint32_t r = y & 1 ? c : y & 8 ? 255 : 0;
                const uint32_t g = y & 2 ? c : y & 8 ? 255 : 0;
                const uint32_t b = y & 4 ? c : y & 8 ? 255 : 0;
                SetDibPixel(lock.image, x, y, Rgb(r, g, b));
            }
    }
    for (const int32_t hue : {0, 60, 120, 179, 180, 181, 240, 300, 360})
        for (const int32_t saturation : {0, 1, 100, 200})
            for (const int32_t brightness : {0, 99, 200})
                ASSERT_TRUE(
                    SameAsReference(kHsbChannels, source.handle, {hue, saturation, brightness, 1, 0, 0, 0}));
}

TEST(HsbChannels, Equals_its_reference_outside_the_sliders) {
    const Picture source = RandomPicture(37, 9, 3);
    for (size_t i = 0; i < kBuiltIn.size(); ++i)
        for (const int32_t odd : {0, -1, -300, 7, 256, 1000, INT32_MAX, INT32_MIN}) {
            Values values = {181, 101, 102, 1, 1, 1, 1};
            values[i] = odd;
            EXPECT_TRUE(SameAsReference(kHsbChannels, source.handle, values)) << i;
        }
}

// The number of colours of one red that the middle positions change, each put through the computation itself.
uint32_t CountChanged(uint32_t red, uint8_t* row) {
    for (uint32_t i = 0; i < 65536; ++i) {
        row[3 * i] = static_cast<uint8_t>(i);
        row[3 * i + 1] = static_cast<uint8_t>(i >> 8);
        row[3 * i + 2] = static_cast<uint8_t>(red);
    }
    ShiftHsbRow(row, 65536, MakeHsbShift(180, 100, 100));
    uint32_t changed = 0;
    for (uint32_t i = 0; i < 65536; ++i)
        changed += row[3 * i] != (i & 255) || row[3 * i + 1] != i >> 8 || row[3 * i + 2] != red;
    return changed;
}

TEST(HsbChannels, The_middle_positions_change_none_of_all_colours) {
    // What the effect's copying instead of computing rests on.
    const Scratch<uint8_t> row(3 * 65536);
    ASSERT_NE(row.address, nullptr);
    for (const bool avx2 : {true, false}) {
        AllowAvx2(avx2);
        for (uint32_t red = 0; red < 256; ++red) EXPECT_EQ(CountChanged(red, row.address), 0u) << red;
    }
    AllowAvx2(true);
}

TEST(HsbChannels, Some_brightnesses_show_the_single_precision_of_greys) {
    // Otherwise the way without it would be all that tests see.
    EXPECT_FALSE(MakeHsbShift(180, 100, 100).greyDiffers);
    int32_t shown = 0;
    for (int32_t brightness = 0; brightness <= 200; ++brightness)
        shown += MakeHsbShift(180, 100, brightness).greyDiffers;
    EXPECT_GT(shown, 0);
}

TEST(HsbChannels, Both_ways_of_shifting_agree_on_all_colours) {
    const Scratch<uint8_t> row(3 * 65536);
    ASSERT_NE(row.address, nullptr);
    // A turned hue, no saturation, the greatest of all, a brightness at which the single precision of greys
    // shows, and no brightness.
    const HsbShift shifts[] = {MakeHsbShift(207, 143, 91), MakeHsbShift(217, 0, 77),
                               MakeHsbShift(360, 200, 200), MakeHsbShift(60, 30, 133),
                               MakeHsbShift(0, 100, 0)};
    for (uint32_t red = 0; red < 256; ++red) {
        const HsbShift& shift = shifts[red % std::size(shifts)];
        std::string results[2];
        for (const bool avx2 : {true, false}) {
            for (uint32_t i = 0; i < 65536; ++i) {
                row.address[3 * i] = static_cast<uint8_t>(i);
                row.address[3 * i + 1] = static_cast<uint8_t>(i >> 8);
                row.address[3 * i + 2] = static_cast<uint8_t>(red);
            }
            AllowAvx2(avx2);
            ShiftHsbRow(row.address, 65536, shift);
            results[avx2].assign(reinterpret_cast<const char*>(row.address), 3 * 65536);
        }
        AllowAvx2(true);
        ASSERT_TRUE(results[0] == results[1]) << red;
    }
}

TEST(HsbChannels, All_stages_off_give_an_unchanged_copy) {
    const Picture source = RandomPicture(13, 9, 4);
    const Picture result = Apply(kHsbChannels, source.handle, {20, 170, 130, 0, 3, 0, 0});
    EXPECT_TRUE(SamePicture(source.handle, result.handle));
    EXPECT_NE(source.handle, result.handle);
}

TEST(HsbChannels, Invert_comes_before_the_channels) {
    EXPECT_EQ(Adjusted(Rgb(10, 20, 30), {180, 100, 100, 0, 0, 1, 1}), Rgb(225, 235, 245));
}

TEST(HsbChannels, The_seven_patterns_rearrange_as_they_are_named) {
    const uint32_t expected[] = {Rgb(3, 2, 1), Rgb(2, 1, 3), Rgb(1, 3, 2), Rgb(2, 1, 1),
                                 Rgb(1, 2, 2), Rgb(3, 3, 2), Rgb(2, 2, 3)};
    for (int32_t pattern = 0; pattern < 7; ++pattern)
        EXPECT_EQ(Adjusted(Rgb(1, 2, 3), {180, 100, 100, 0, pattern, 1, 0}), expected[pattern]) << pattern;
}

TEST(HsbChannels, An_index_beyond_the_list_is_its_last_item_and_no_selection_is_its_first) {
    EXPECT_EQ(Adjusted(Rgb(1, 2, 3), {180, 100, 100, 0, 7, 1, 0}), Rgb(2, 2, 3));
    EXPECT_EQ(Adjusted(Rgb(1, 2, 3), {180, 100, 100, 0, INT32_MAX, 1, 0}), Rgb(2, 2, 3));
    EXPECT_EQ(Adjusted(Rgb(1, 2, 3), {180, 100, 100, 0, -1, 1, 0}), Rgb(3, 2, 1));
    EXPECT_EQ(Adjusted(Rgb(1, 2, 3), {180, 100, 100, 0, INT32_MIN, 1, 0}), Rgb(3, 2, 1));
}

TEST(HsbChannels, Half_a_turn_makes_pure_red_cyan) {
    EXPECT_EQ(Adjusted(Rgb(255, 0, 0), {360, 100, 100, 1, 0, 0, 0}), Rgb(0, 255, 255));
}

TEST(HsbChannels, A_hue_shifted_out_of_the_circle_takes_the_last_sectors_colours) {
    // Blue at 240 degrees plus 180: 420, sector 7, whose fraction is 0: (V, p, q).
    EXPECT_EQ(Adjusted(Rgb(0, 0, 255), {360, 100, 100, 1, 0, 0, 0}), Rgb(255, 0, 255));
    // Red at 0 minus 180: sector -3, fraction 0.
    EXPECT_EQ(Adjusted(Rgb(255, 0, 0), {0, 100, 100, 1, 0, 0, 0}), Rgb(255, 0, 255));
}

TEST(HsbChannels, No_saturation_makes_grey_at_the_pixels_brightness) {
    EXPECT_EQ(Adjusted(Rgb(10, 200, 30), {250, 0, 100, 1, 0, 0, 0}), Rgb(200, 200, 200));
    EXPECT_EQ(Adjusted(Rgb(255, 0, 7), {180, 0, 100, 1, 0, 0, 0}), Rgb(255, 255, 255));
}

TEST(HsbChannels, Double_brightness_is_capped) {
    EXPECT_EQ(Adjusted(Rgb(128, 128, 128), {180, 100, 200, 1, 0, 0, 0}), Rgb(255, 255, 255));
}

TEST(HsbChannels, Black_stays_black_under_every_shift) {
    for (const int32_t hue : {0, 90, 180, 360})
        for (const int32_t saturation : {0, 100, 200})
            for (const int32_t brightness : {0, 100, 200})
                EXPECT_EQ(Adjusted(0, {hue, saturation, brightness, 1, 0, 0, 0}), 0u);
}

TEST(HsbChannels, Any_value_is_survived) { ExpectAnyValueIsSurvived(kHsbChannels, kBuiltIn); }

TEST(HsbChannels, Refused_memory_is_survived) {
    ExpectRefusedMemoryIsSurvived(kHsbChannels, RandomPicture(9, 8, 1).handle, {200, 140, 120, 1, 3, 1, 1});
}

}  // namespace
}  // namespace kfx::test
