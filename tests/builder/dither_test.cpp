// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "builder/fixed_palettes.h"
#include "builder/remap.h"
#include "tests/reference/remap_reference.h"
#include "tests/support/pictures.h"

namespace kfx::test {
namespace {

void SetTwoColors(RemapTarget* target, int32_t brightness, int32_t contrast) {
    BuildFixedPalette(target->palette, 0, &target->bitsPerPixel);
    target->ditherBrightness = brightness;
    target->ditherContrast = contrast;
}

TEST(GrayDithering, Every_brightness_and_contrast_gives_the_reference) {
    // 128 makes the tone curve's step infinite, more makes it fall; the settings are signed.
    const int32_t values[] = {INT32_MIN, -1000, -128, -20, 0, 1, 20, 127, 128, 129, 256, 5000, INT32_MAX};
    for (const Size size : {Size{1, 1}, Size{2, 5}, Size{3, 3}, Size{4, 6}, Size{8, 3}, Size{29, 17}}) {
        const Picture picture = ShadedPicture(size.width, size.height, 4);
        for (const int32_t brightness : values) {
            for (const int32_t contrast : values) {
                RemapTarget target;
                SetTwoColors(&target, brightness, contrast);
                const Picture actual(DitherRemap(picture.handle, &target));
                const Picture expected(ReferenceDitherRemap(
                    picture.handle, {target.palette, 1, 256, false, brightness, contrast}));
                ASSERT_TRUE(SamePicture(expected.handle, actual.handle))
                    << size.width << "x" << size.height << ", " << brightness << ", " << contrast;
            }
        }
    }
}

TEST(GrayDithering, With_a_contrast_of_128_all_but_black_is_as_bright_as_can_be) {
    RemapTarget target;
    SetTwoColors(&target, 128, 128);
    const Picture black = FlatPicture(4, 1, 0);
    const Picture dark = FlatPicture(4, 1, Rgb(9, 9, 9));
    const Picture ofBlack(DitherRemap(black.handle, &target));
    const Picture ofDark(DitherRemap(dark.handle, &target));
    // Entry 0 of the curve is 1, every other one 254; both beat the threshold of their flat picture.
    EXPECT_EQ(PixelOf(ofBlack.handle, 0, 0), 1u);
    EXPECT_EQ(PixelOf(ofDark.handle, 0, 0), 1u);
}

// Where a dithered picture differs from one whose pixel (column, bottom row) has a colour between two
// entries.
struct Spread {
    bool belowLeft;
    bool below;
};

// Two flat rows of a colour that is an entry, but for one pixel of the bottom row, which is processed first;
// its error moves the row above to other entries where it arrives.
Spread SpreadOf(int32_t column, int32_t width) {
    RemapTarget target;
    for (uint8_t i = 0; i < 2; ++i) std::memset(target.palette + 3 * i, i ? 255 : 0, 3);
    for (uint8_t i = 2; i < 255; ++i) std::memset(target.palette + 3 * i, 100 + i % 100, 3);
    target.colorCount = 200;
    const Picture picture = FlatPicture(width, 2, Rgb(150, 150, 150));
    const ImageLock lock(picture.handle);
    SetDibPixel(lock.image, column, 1, Rgb(50, 50, 50));  // nearest entries: 0 and 102
    const Picture dithered(DitherRemap(picture.handle, &target));
    const uint32_t undisturbed = PixelOf(dithered.handle, width - 1, 0);
    return {column > 0 && PixelOf(dithered.handle, column - 1, 0) != undisturbed,
            PixelOf(dithered.handle, column, 0) != undisturbed};
}

TEST(ColorDithering, Error_never_goes_down_and_left_of_columns_0_and_1) {
    EXPECT_TRUE(SpreadOf(0, 12).below);
    EXPECT_FALSE(SpreadOf(1, 12).belowLeft);
    EXPECT_TRUE(SpreadOf(1, 12).below);
    EXPECT_TRUE(SpreadOf(2, 12).belowLeft);
    EXPECT_TRUE(SpreadOf(3, 12).belowLeft);
}

// The dithered top and bottom row of a picture of two rows of grays, which is processed bottom row first.
struct Rows {
    std::string top;
    std::string bottom;
};

Rows DitherGrays(const std::vector<uint32_t>& top, const std::vector<uint32_t>& bottom) {
    const auto width = static_cast<int32_t>(top.size());
    const Picture picture = FlatPicture(width, 2, 0);
    const ImageLock lock(picture.handle);
    for (int32_t x = 0; x < width; ++x) {
        const auto column = static_cast<size_t>(x);
        SetDibPixel(lock.image, x, 0, Rgb(top[column], top[column], top[column]));
        SetDibPixel(lock.image, x, 1, Rgb(bottom[column], bottom[column], bottom[column]));
    }
    RemapTarget target;
    SetTwoColors(&target, 0, 0);  // the curve changes only black (to 1) and white (to 254)
    const Picture dithered(DitherRemap(picture.handle, &target));
    Rows rows;
    for (int32_t x = 0; x < width; ++x) {
        rows.top += PixelOf(dithered.handle, x, 0) ? '1' : '0';
        rows.bottom += PixelOf(dithered.handle, x, 1) ? '1' : '0';
    }
    return rows;
}

// In the rows below black and one white pixel stretch the tones, so that the threshold is 127; 110 has a
// luminance of 108, an error of 108 and shares of 6, of which three lift 120 (118) above the threshold.

TEST(GrayDithering, Column_0_sends_its_error_down_and_left_to_the_byte_before_the_next_row) {
    EXPECT_EQ(DitherGrays({0, 0, 0, 255}, {110, 0, 0, 120}).bottom, "0001")
        << "the last pixel of its own row";
    EXPECT_EQ(DitherGrays({0, 0, 0, 0, 255}, {110, 0, 0, 0, 120}).bottom, "00000") << "padding";
}

TEST(GrayDithering, Only_column_1_keeps_its_error_from_going_down_and_left) {
    EXPECT_EQ(DitherGrays({120, 0, 0, 0, 255}, {0, 110, 0, 0, 0}).top, "00001");
    EXPECT_EQ(DitherGrays({0, 120, 0, 0, 255}, {0, 0, 110, 0, 0}).top, "01001");
    EXPECT_EQ(DitherGrays({0, 0, 120, 0, 255}, {0, 0, 0, 110, 0}).top, "00101");
}

TEST(Dithering, A_one_bit_source_is_refused) {
    const Picture picture = RandomPicture(9, 5, 1, 1);
    RemapTarget gray, color;
    SetTwoColors(&gray, 20, 20);
    BuildFixedPalette(color.palette, 6, &color.bitsPerPixel);
    EXPECT_EQ(DitherRemap(picture.handle, &gray), nullptr);
    EXPECT_EQ(DitherRemap(picture.handle, &color), nullptr);
}

TEST(Dithering, A_missing_source_gives_nothing) {
    RemapTarget target;
    EXPECT_EQ(DitherRemap(nullptr, &target), nullptr);
    EXPECT_EQ(PlainRemap(nullptr, &target), nullptr);
}

}  // namespace
}  // namespace kfx::test
