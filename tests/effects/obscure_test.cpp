// SPDX-License-Identifier: MIT
#include "effects/effects.h"

#include "tests/effects/expected_controls.h"
#include "tests/support/effect_checks.h"

namespace kfx::test {
namespace {

TEST(Obscure, Has_these_controls) {
    ExpectControls(
        kObscure, "Obscure", 7405,
        {
            {.id = 127, .key = "Style005Level", .builtIn = 8, .text = "2,64,8", .caption = "Level:"},
        });
}

TEST(Obscure, EqualsItsReferenceOnPicturesOfAllSizes) {
    for (const int32_t level : {1, 2, 3, 8, 64, 1000}) ExpectReferenceOnTrickyPictures(kObscure, {level});
}

TEST(Obscure, TilesTallerThanSixteenBitSumsHoldAreAveragedExactly) {
    EXPECT_TRUE(SameAsReference(kObscure, FlatPicture(3, 700, 0xFFFFFF).handle, {600}));
    EXPECT_TRUE(SameAsReference(kObscure, RandomPicture(5, 700, 9).handle, {515}));
}

TEST(Obscure, EqualsItsReferenceAtEveryDepth) {
    for (const int32_t bits : {1, 4, 8, 32})
        EXPECT_TRUE(SameAsReference(kObscure, RandomPicture(29, 23, 5, bits).handle, {4}));
}

TEST(Obscure, TilesCutOffAtTheEdgesAverageTheirOwnPixelsOnly) {
    Picture source = FlatPicture(5, 3, 0x000000);
    {
        const ImageLock lock(source.handle);
        SetDibPixel(lock.image, 4, 0, 0x0000FF);
        SetDibPixel(lock.image, 4, 2, 0x00FF00);
    }
    const Picture result = Apply(kObscure, source.handle, {2});
    EXPECT_EQ(PixelOf(result.handle, 4, 0), 127u);  // of two pixels
    EXPECT_EQ(PixelOf(result.handle, 4, 1), 127u);
    EXPECT_EQ(PixelOf(result.handle, 4, 2), 0x00FF00u);  // of one
    EXPECT_EQ(PixelOf(result.handle, 3, 0), 0u);
}

TEST(Obscure, LevelTwoAveragesSquaresOfFourPixels) {
    Picture source(CreateDib(2, 2, nullptr, 24));
    {
        const ImageLock lock(source.handle);
        const uint32_t reds[] = {1, 2, 3, 5};
        for (int32_t i = 0; i < 4; ++i) SetDibPixel(lock.image, i % 2, i / 2, reds[i]);
    }
    EXPECT_TRUE(SamePicture(FlatPicture(2, 2, 2).handle, Apply(kObscure, source.handle, {2}).handle));
}

TEST(Obscure, APictureOfOnePixelComesBackUnchanged) {
    const Picture source = FlatPicture(1, 1, 0xABCDEF);
    EXPECT_TRUE(SamePicture(source.handle, Apply(kObscure, source.handle, {2}).handle));
}

TEST(Obscure, ATileOfOneColourKeepsIt) {
    const Picture source = FlatPicture(37, 41, 0xFE01C9);
    EXPECT_TRUE(SamePicture(source.handle, Apply(kObscure, source.handle, {8}).handle));
}

TEST(Obscure, ALevelBelowOneLeavesThePictureAlone) {
    const Picture source = RandomPicture(9, 9, 1);
    for (const int32_t level : {0, -1, -64})
        EXPECT_EQ(Apply(kObscure, source.handle, {level}).handle, nullptr);
}

TEST(Obscure, AnySettingAndRefusedMemoryAreSurvived) {
    ExpectAnyValueIsSurvived(kObscure, {8});
    ExpectRefusedMemoryIsSurvived(kObscure, RandomPicture(50, 50, 1).handle, {8});
}

}  // namespace
}  // namespace kfx::test
