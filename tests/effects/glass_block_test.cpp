// SPDX-License-Identifier: MIT
#include "effects/effects.h"

#include "tests/effects/expected_controls.h"
#include "tests/support/effect_checks.h"

namespace kfx::test {
namespace {

TEST(GlassBlock, Has_these_controls) {
    ExpectControls(
        kGlassBlock, "Glass Block", 7402,
        {
            {.id = 115, .key = "Style002Size", .builtIn = 20, .text = "4,64,20", .caption = "Block size:"},
        });
}

TEST(GlassBlock, Equals_its_reference_on_pictures_of_all_sizes) {
    for (const int32_t size : {1, 2, 4, 20, 64, 1000}) ExpectReferenceOnTrickyPictures(kGlassBlock, {size});
}

TEST(GlassBlock, Equals_its_reference_at_every_depth) {
    for (const int32_t bits : {1, 4, 8, 32})
        EXPECT_TRUE(SameAsReference(kGlassBlock, RandomPicture(45, 33, 5, bits).handle, {4}));
}

TEST(GlassBlock, Cells_show_every_second_row_around_their_centre) {
    const Picture result = Apply(kGlassBlock, CoordinatePicture(100, 120).handle, {20});
    for (int32_t y = 0; y < 20; ++y)
        EXPECT_EQ(GreenOf(PixelOf(result.handle, 0, y)), static_cast<uint32_t>(2 * y));
    for (int32_t y = 20; y < 60; ++y)
        EXPECT_EQ(GreenOf(PixelOf(result.handle, 0, y)), static_cast<uint32_t>(2 * (y - 20)));
}

TEST(GlassBlock, Rows_past_the_picture_repeat_the_last_row_and_columns_show_their_own) {
    const Picture result = Apply(kGlassBlock, CoordinatePicture(30, 30).handle, {20});
    EXPECT_EQ(PixelOf(result.handle, 3, 14), Rgb(6, 28, kCoordinateBlue));
    EXPECT_EQ(PixelOf(result.handle, 3, 15), Rgb(6, 29, kCoordinateBlue));
    EXPECT_EQ(PixelOf(result.handle, 3, 19), Rgb(6, 29, kCoordinateBlue));
    EXPECT_EQ(PixelOf(result.handle, 14, 3), Rgb(28, 6, kCoordinateBlue));
    EXPECT_EQ(PixelOf(result.handle, 15, 3), Rgb(15, 6, kCoordinateBlue));
    EXPECT_EQ(PixelOf(result.handle, 19, 3), Rgb(19, 6, kCoordinateBlue));
}

TEST(GlassBlock, A_picture_narrower_than_half_a_cell_doubles_its_columns_while_they_are_inside) {
    const Picture result = Apply(kGlassBlock, CoordinatePicture(9, 3).handle, {64});
    const uint32_t columns[] = {0, 2, 4, 6, 8, 5, 6, 7, 8};
    for (int32_t x = 0; x < 9; ++x) EXPECT_EQ(RedOf(PixelOf(result.handle, x, 0)), columns[x]) << x;
}

TEST(GlassBlock, A_size_below_one_leaves_the_picture_alone) {
    const Picture source = RandomPicture(9, 9, 1);
    for (const int32_t size : {0, -1, -64})
        EXPECT_EQ(Apply(kGlassBlock, source.handle, {size}).handle, nullptr);
}

TEST(GlassBlock, Any_setting_and_refused_memory_are_survived) {
    ExpectAnyValueIsSurvived(kGlassBlock, {20});
    ExpectRefusedMemoryIsSurvived(kGlassBlock, RandomPicture(50, 50, 1).handle, {20});
}

}  // namespace
}  // namespace kfx::test
