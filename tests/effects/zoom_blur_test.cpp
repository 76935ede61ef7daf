// SPDX-License-Identifier: MIT
#include "effects/effects.h"

#include "tests/effects/expected_controls.h"
#include "tests/support/effect_checks.h"

namespace kfx::test {
namespace {

TEST(ZoomBlur, Has_these_controls) {
    ExpectControls(
        kZoomBlur, "Zoom Blur", 7407,
        {
            {.id = 133,
             .key = "Style007Displacement",
             .builtIn = 240,
             .text = "100,1000,240",
             .caption = "Radius:"},
            {.id = 136, .key = "Style007Cycles", .builtIn = 8, .text = "4,40,8", .caption = "Cycles:"},
        });
}

TEST(ZoomBlur, Equals_its_reference_on_pictures_of_all_sizes) {
    for (const Values& values : {Values{240, 8}, Values{100, 4}, Values{240, 40}, Values{1000, 40}})
        ExpectReferenceOnTrickyPictures(kZoomBlur, values);
}

TEST(ZoomBlur, Equals_its_reference_beyond_the_panels_range) {
    const Picture source = RandomPicture(50, 37, 3);
    for (const int32_t displacement : {0, 1, -240, 50000, INT32_MAX, INT32_MIN})
        for (const int32_t cycles : {-3, 0, 1, 2, 9, 255, 256, 300})
            EXPECT_TRUE(SameAsReference(kZoomBlur, source.handle, {displacement, cycles}));
}

TEST(ZoomBlur, Equals_its_reference_at_every_depth) {
    for (const int32_t bits : {1, 4, 8, 32})
        for (const int32_t cycles : {0, 8})
            EXPECT_TRUE(SameAsReference(kZoomBlur, RandomPicture(29, 23, 5, bits).handle, {240, cycles}));
}

TEST(ZoomBlur, The_centre_is_never_changed) {
    const Picture source = RandomPicture(40, 31, 7);
    for (const Values& values : {Values{240, 8}, Values{1000, 40}})
        EXPECT_EQ(PixelOf(Apply(kZoomBlur, source.handle, values).handle, 20, 15),
                  PixelOf(source.handle, 20, 15));
}

TEST(ZoomBlur, Sampling_ends_once_mirrored_samples_leave_the_picture) {
    // Each step is 10 percent: from the 12th sample on they lie beyond the centre, and the corner's leave the
    // picture.
    const Picture source = RandomPicture(40, 30, 7);
    const Picture all = Apply(kZoomBlur, source.handle, {1000, 40});
    const Picture first21 = Apply(kZoomBlur, source.handle, {1000, 21});
    EXPECT_EQ(PixelOf(all.handle, 0, 0), PixelOf(first21.handle, 0, 0));
    EXPECT_NE(PixelOf(all.handle, 15, 12), PixelOf(first21.handle, 15, 12));
}

TEST(ZoomBlur, No_sample_is_lost_before_the_scale_turns_negative) {
    // The 11th sample of every pixel is the centre, so a white centre shows everywhere.
    Picture source = FlatPicture(40, 30, 0);
    {
        const ImageLock lock(source.handle);
        SetDibPixel(lock.image, 20, 15, 0xFFFFFF);
    }
    const Picture result = Apply(kZoomBlur, source.handle, {1000, 11});
    for (int32_t y = 0; y < 30; ++y)
        for (int32_t x = 0; x < 40; ++x)
            EXPECT_GE(RedOf(PixelOf(result.handle, x, y)), 255u / 11) << x << "," << y;
}

TEST(ZoomBlur, One_cache_serves_frames_of_all_sizes) {
    ExpectOneCacheServesAllFrames(kZoomBlur, {240, 8}, {250, 8});
    ExpectOneCacheServesAllFrames(kZoomBlur, {240, 8}, {240, 9});
}

TEST(ZoomBlur, Any_setting_and_refused_memory_are_survived) {
    ExpectAnyValueIsSurvived(kZoomBlur, {240, 8});
    ExpectRefusedMemoryIsSurvived(kZoomBlur, RandomPicture(50, 50, 1).handle, {240, 8});
}

}  // namespace
}  // namespace kfx::test
