// SPDX-License-Identifier: MIT
#include "effects/effects.h"

#include "tests/effects/expected_controls.h"
#include "tests/support/effect_checks.h"

namespace kfx::test {
namespace {

uint32_t Solarized(uint32_t color, int32_t threshold) {
    return PixelOf(Apply(kSolarize, FlatPicture(1, 1, color).handle, {threshold}).handle, 0, 0);
}

TEST(Solarize, Has_these_controls) {
    ExpectControls(kSolarize, "Solarize", 7412,
                   {
                       {.id = 181,
                        .key = "Style012Threshold",
                        .builtIn = 128,
                        .text = "1,255,128",
                        .caption = "Threshold:"},
                   });
}

TEST(Solarize, Equals_its_reference_on_pictures_of_all_sizes) {
    for (const int32_t threshold : {128, 1, 255, 77}) ExpectReferenceOnTrickyPictures(kSolarize, {threshold});
}

TEST(Solarize, Equals_its_reference_outside_the_slider) {
    for (const int32_t threshold : {0, -1, -300, 256, 257, 1000, INT32_MAX, INT32_MIN})
        EXPECT_TRUE(SameAsReference(kSolarize, RandomPicture(67, 5, 2).handle, {threshold}));
}

TEST(Solarize, Threshold_one_turns_only_zeros) {
    EXPECT_EQ(Solarized(Rgb(0, 1, 255), 1), Rgb(255, 1, 255));
    EXPECT_EQ(Solarized(Rgb(2, 0, 128), 1), Rgb(2, 255, 128));
}

TEST(Solarize, Threshold_255_turns_everything_but_255) {
    EXPECT_EQ(Solarized(Rgb(0, 254, 255), 255), Rgb(255, 1, 255));
    EXPECT_EQ(Solarized(Rgb(100, 200, 50), 255), Rgb(155, 55, 205));
}

TEST(Solarize, The_dark_side_of_the_threshold_turns) {
    EXPECT_EQ(Solarized(Rgb(100, 200, 50), 128), Rgb(155, 200, 205));
    EXPECT_EQ(Solarized(Rgb(127, 128, 129), 128), Rgb(128, 128, 129));
}

TEST(Solarize, Row_padding_stays_zero) {
    const Picture result = Apply(kSolarize, RandomPicture(5, 3, 3).handle, {128});
    const ImageLock lock(result.handle);
    for (int32_t r = 0; r < 3; ++r) EXPECT_EQ(StoredRow(lock.image, r)[15], 0);
}

TEST(Solarize, Any_value_is_survived) { ExpectAnyValueIsSurvived(kSolarize, {128}); }

TEST(Solarize, Refused_memory_is_survived) {
    ExpectRefusedMemoryIsSurvived(kSolarize, RandomPicture(9, 8, 1).handle, {128});
}

}  // namespace
}  // namespace kfx::test
