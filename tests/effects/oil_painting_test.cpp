// SPDX-License-Identifier: MIT
#include "effects/effects.h"

#include "tests/effects/expected_controls.h"
#include "tests/support/effect_checks.h"

namespace kfx::test {
namespace {

// Few grey levels, so that ties are everywhere.
Picture FewLevels(int32_t width, int32_t height, uint32_t seed, uint32_t levels) {
    Picture picture = RandomPicture(width, height, seed);
    const ImageLock lock(picture.handle);
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x)
            SetDibPixel(lock.image, x, y, GetDibPixel(lock.image, x, y) % levels * (255 / levels) * 0x010101);
    return picture;
}

TEST(OilPainting, Has_these_controls) {
    ExpectControls(
        kOilPainting, "Oil Painting", 7406,
        {
            {.id = 130, .key = "Style006Radius", .builtIn = 250, .text = "100,400,250", .caption = "Radius:"},
        });
}

TEST(OilPainting, Equals_its_reference_on_pictures_of_all_sizes) {
    for (const int32_t radius : {100, 250, 400}) ExpectReferenceOnTrickyPictures(kOilPainting, {radius});
}

TEST(OilPainting, Equals_its_reference_where_many_levels_tie) {
    for (const uint32_t levels : {2u, 3u, 5u, 16u, 100u})
        for (const int32_t radius : {100, 200, 300, 400})
            EXPECT_TRUE(
                SameAsReference(kOilPainting, FewLevels(53, 37, levels, levels).handle, {radius}, 0x7F7F7F));
}

TEST(OilPainting, Equals_its_reference_beyond_the_panels_range) {
    const Picture source = RandomPicture(23, 17, 3);
    for (const int32_t radius : {0, -1, -100, INT32_MIN, 1, 99, 401, 1000, 5000, INT32_MAX})
        EXPECT_TRUE(SameAsReference(kOilPainting, source.handle, {radius}));
}

TEST(OilPainting, The_reach_grows_by_two_with_each_hundred_begun) {
    const Picture source = RandomPicture(60, 50, 6);
    const auto painted = [&](int32_t radius) { return Apply(kOilPainting, source.handle, {radius}, 0); };
    EXPECT_FALSE(SamePicture(painted(100).handle, painted(101).handle));
    EXPECT_TRUE(SamePicture(painted(101).handle, painted(200).handle));
    EXPECT_TRUE(SamePicture(painted(301).handle, painted(400).handle));
    EXPECT_FALSE(SamePicture(painted(300).handle, painted(400).handle));
    // Reach 3 at radius 100: a level seen 3 pixels away can win, one 4 pixels away cannot.
    EXPECT_TRUE(SameAsReference(kOilPainting, source.handle, {100}));
}

TEST(OilPainting, A_one_colour_picture_keeps_its_colour_but_for_the_right_column_and_the_top_row) {
    const Picture source = FlatPicture(40, 30, 0x123456);
    // The border is wide enough to outvote the picture at its corners, so it has the same brightness here.
    const Picture result = Apply(kOilPainting, source.handle, {250}, 0x123456);
    EXPECT_TRUE(SamePicture(source.handle, result.handle));
    const Picture framed = Apply(kOilPainting, source.handle, {250}, 0xFFFFFF);
    for (int32_t y = 8; y < 22; ++y) EXPECT_EQ(PixelOf(framed.handle, 20, y), 0x123456u);
    for (int32_t y = 0; y < 30; ++y) EXPECT_EQ(PixelOf(framed.handle, 39, y), 0xFFFFFFu);
    for (int32_t x = 0; x < 40; ++x) EXPECT_EQ(PixelOf(framed.handle, x, 0), 0xFFFFFFu);
    EXPECT_EQ(PixelOf(framed.handle, 20, 29), 0x123456u) << "the bottom row is filtered";
    EXPECT_EQ(PixelOf(framed.handle, 0, 15), 0x123456u) << "the left column is filtered";
}

TEST(OilPainting, A_contrasting_background_can_win_at_the_edges) {
    const Picture source = RandomPicture(40, 30, 9);
    const Picture result = Apply(kOilPainting, source.handle, {250}, 0x00FF00);
    EXPECT_EQ(PixelOf(result.handle, 0, 29), 0x00FF00u);
    EXPECT_EQ(PixelOf(result.handle, 2, 15), 0x00FF00u);
    EXPECT_NE(PixelOf(result.handle, 20, 15), 0x00FF00u);
}

TEST(OilPainting, Refused_memory_gives_nothing_or_the_background) {
    const Picture background = FlatPicture(20, 15, kTestBackground);
    ExpectRefusedMemoryIsSurvived(kOilPainting, RandomPicture(20, 15, 1).handle, {250}, background.handle);
}

TEST(OilPainting, Any_setting_is_survived) {
    ExpectAnyValueIsSurvived(kOilPainting, {250});
    EXPECT_EQ(Apply(kOilPainting, RandomPicture(9, 9, 1, 8).handle, {250}, 0).handle, nullptr);
}

}  // namespace
}  // namespace kfx::test
