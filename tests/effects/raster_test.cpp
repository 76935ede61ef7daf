// SPDX-License-Identifier: MIT
#include "effects/effects.h"

#include "tests/effects/expected_controls.h"
#include "tests/support/effect_checks.h"

namespace kfx::test {
namespace {

TEST(Raster, Has_these_controls) {
    ExpectControls(
        kRaster, "Raster", 7411,
        {
            {.id = 175, .key = "Style011Density", .builtIn = 160, .text = "1,255,160", .caption = "Density:"},
            {.id = 178, .key = "Style011Size", .builtIn = 1, .text = "1,8,1", .caption = "Size:"},
        });
}

TEST(Raster, Equals_its_reference_on_pictures_of_all_sizes) {
    ExpectReferenceOnTrickyPictures(kRaster, {160, 1});
    ExpectReferenceOnTrickyPictures(kRaster, {255, 8});
    ExpectReferenceOnTrickyPictures(kRaster, {1, 3});
}

TEST(Raster, Equals_its_reference_for_every_density_and_value) {
    Picture source = FlatPicture(256, 1, 0);
    {
        const ImageLock lock(source.handle);
        for (int32_t x = 0; x < 256; ++x) {
            const auto c = static_cast<uint32_t>(x);
            SetDibPixel(lock.image, x, 0, Rgb(c, c, c));
        }
    }
    for (int32_t density = 0; density < 256; ++density)
        ASSERT_TRUE(SameAsReference(kRaster, source.handle, {density, 1}));
}

TEST(Raster, Equals_its_reference_outside_the_sliders) {
    const Picture source = RandomPicture(37, 21, 2);
    for (const int32_t odd : {0, -1, -300, 256, 1000, INT32_MAX, INT32_MIN}) {
        EXPECT_TRUE(SameAsReference(kRaster, source.handle, {odd, 1}));
        EXPECT_TRUE(SameAsReference(kRaster, source.handle, {160, odd}));
    }
}

TEST(Raster, Full_density_paints_lines_in_the_background_colour) {
    const Picture source = RandomPicture(9, 8, 3);
    const Picture result = Apply(kRaster, source.handle, {255, 1}, 0x123456);
    for (int32_t y = 0; y < 8; ++y)
        for (int32_t x = 0; x < 9; ++x)
            EXPECT_EQ(PixelOf(result.handle, x, y), y % 2 ? PixelOf(source.handle, x, y) : 0x123456u);
}

TEST(Raster, Least_density_hardly_changes_a_line) {
    EXPECT_EQ(PixelOf(Apply(kRaster, FlatPicture(3, 1, 0xFFFFFF).handle, {1, 1}, 0).handle, 1, 0), 0xFEFEFEu);
}

TEST(Raster, Lines_and_gaps_alternate_with_equal_height_from_the_top) {
    for (const int32_t size : {1, 3, 8}) {
        const Picture result = Apply(kRaster, FlatPicture(2, 40, 0).handle, {255, size}, 0x00FF00);
        for (int32_t y = 0; y < 40; ++y)
            EXPECT_EQ(PixelOf(result.handle, 0, y), y / size % 2 == 0 ? 0x00FF00u : 0u) << size << ", " << y;
    }
}

TEST(Raster, A_picture_of_one_row_is_a_line) {
    EXPECT_EQ(PixelOf(Apply(kRaster, FlatPicture(4, 1, 0).handle, {255, 1}, 0x112233).handle, 3, 0),
              0x112233u);
}

TEST(Raster, Mid_grey_at_density_160_turns_white_into_174) {
    const Picture result = Apply(kRaster, FlatPicture(1, 1, 0xFFFFFF).handle, {160, 1}, 0x7F7F7F);
    EXPECT_EQ(PixelOf(result.handle, 0, 0), 0xAEAEAEu);
}

TEST(Raster, Lines_without_a_height_are_not_drawn) {
    const Picture source = RandomPicture(6, 5, 4);
    for (const int32_t size : {0, -1, INT32_MIN})
        EXPECT_TRUE(SamePicture(source.handle, Apply(kRaster, source.handle, {160, size}).handle));
}

TEST(Raster, Any_value_is_survived) { ExpectAnyValueIsSurvived(kRaster, {160, 1}); }

TEST(Raster, Refused_memory_is_survived) {
    ExpectRefusedMemoryIsSurvived(kRaster, RandomPicture(9, 8, 1).handle, {160, 1});
}

}  // namespace
}  // namespace kfx::test
