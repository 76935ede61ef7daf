// SPDX-License-Identifier: MIT
#include "builder/supercompression.h"

#include <gtest/gtest.h>

#include <random>

#include "framework/cpu.h"
#include "tests/reference/remap_reference.h"
#include "tests/support/pictures.h"

namespace kfx::test {
namespace {

Picture CopyOf(ImageHandle image) {
    const ImageLock lock(image);
    return Picture(DuplicateImage(lock.image));
}

// The picture with every n-th pixel, or a whole block of them, changed.
Picture ChangedCopy(ImageHandle image, uint32_t seed) {
    Picture copy = CopyOf(image);
    const ImageLock lock(copy.handle);
    std::mt19937 random(seed);
    const auto changes = static_cast<int32_t>(random() % 200);
    for (int32_t i = 0; i < changes; ++i) {
        const auto x = static_cast<int32_t>(random() % static_cast<uint32_t>(lock.image->width));
        const auto y = static_cast<int32_t>(random() % static_cast<uint32_t>(lock.image->height));
        // One channel alone must be enough.
        SetDibPixel(lock.image, x, y, GetDibPixel(lock.image, x, y) ^ 1u << random() % 24);
    }
    return copy;
}

void ExpectReference(ImageHandle composite, ImageHandle frame, const std::string& name) {
    const Picture expectedComposite = CopyOf(composite);
    const Picture expected(ReferenceUpdateComposite(expectedComposite.handle, frame));
    const Picture actual(UpdateComposite(composite, frame));
    ASSERT_TRUE(SamePicture(expected.handle, actual.handle)) << "mask, " << name;
    ASSERT_EQ(BytesOf(expected.handle), BytesOf(actual.handle)) << "mask, " << name;
    ASSERT_TRUE(SamePicture(expectedComposite.handle, composite)) << "composite, " << name;
}

class CompositePaths : public ::testing::TestWithParam<bool> {
protected:
    void SetUp() override { AllowAvx2(GetParam()); }
    void TearDown() override { AllowAvx2(true); }
};

TEST_P(CompositePaths, Masks_and_composites_are_the_reference_s) {
    uint32_t seed = 0;
    for (const Size size : TrickySizes()) {
        const Picture composite = RandomPicture(size.width, size.height, ++seed);
        for (int frame = 0; frame < 6; ++frame) {
            const Picture next = frame == 3 ? RandomPicture(size.width, size.height, ++seed)
                                            : ChangedCopy(composite.handle, ++seed);
            ExpectReference(composite.handle, next.handle,
                            std::to_string(size.width) + "x" + std::to_string(size.height));
            if (HasFatalFailure()) return;
        }
    }
}

TEST_P(CompositePaths, Frames_of_other_sizes_give_the_reference) {
    const Picture composite = ShadedPicture(40, 30, 1);
    for (const Size size :
         {Size{25, 18}, Size{52, 22}, Size{33, 41}, Size{1, 1}, Size{40, 30}, Size{60, 60}}) {
        const Picture frame = ShadedPicture(size.width, size.height, 1);
        ExpectReference(composite.handle, frame.handle,
                        std::to_string(size.width) + "x" + std::to_string(size.height));
        if (HasFatalFailure()) return;
    }
}

TEST_P(CompositePaths, Images_of_every_depth_give_the_reference) {
    for (const int32_t depth : {1, 4, 8, 32}) {
        const Picture composite = RandomPicture(19, 7, 1, depth);
        const Picture same = CopyOf(composite.handle);
        const Picture other = RandomPicture(15, 9, 2, depth);
        ExpectReference(composite.handle, same.handle, std::to_string(depth) + " bits, same");
        ExpectReference(composite.handle, other.handle, std::to_string(depth) + " bits, other");
        if (HasFatalFailure()) return;
    }
}

INSTANTIATE_TEST_SUITE_P(Processors, CompositePaths, ::testing::Bool(),
                         [](const auto& parameter) { return parameter.param ? "Avx2" : "Plain"; });

TEST(Supercompression, The_same_frame_again_is_all_unchanged) {
    const Picture composite = ShadedPicture(21, 9, 1);
    const Picture again = CopyOf(composite.handle);
    const Picture mask(UpdateComposite(composite.handle, again.handle));
    const ImageLock lock(mask.handle);
    EXPECT_EQ(lock.image->bitCount, 1);
    EXPECT_EQ(MemorySize(mask.handle), 48u + 4 * 9);
    EXPECT_EQ(lock.image->colorsUsed, 2u);
    EXPECT_EQ(lock.image->colorsImportant, 2u);
    for (int32_t y = 0; y < 9; ++y)
        for (int32_t x = 0; x < 21; ++x) EXPECT_EQ(GetDibPixel(lock.image, x, y), 1u);
}

TEST(Supercompression, A_pixel_that_returns_to_an_older_colour_counts_as_changed) {
    const Picture composite = FlatPicture(3, 1, 0x111111);
    const Picture other = FlatPicture(3, 1, 0x222222);
    const Picture first = FlatPicture(3, 1, 0x111111);
    const Picture to(UpdateComposite(composite.handle, other.handle));
    const Picture back(UpdateComposite(composite.handle, first.handle));
    EXPECT_EQ(PixelOf(to.handle, 1, 0), 0u);
    EXPECT_EQ(PixelOf(back.handle, 1, 0), 0u);
}

TEST(Supercompression, A_smaller_frame_leaves_white_outside_its_area_and_counts_it_as_changed_every_time) {
    const Picture composite = FlatPicture(4, 2, 0xFFFFFF);
    const Picture small = FlatPicture(2, 1, 0xFFFFFF);
    for (int i = 0; i < 2; ++i) {
        const Picture mask(UpdateComposite(composite.handle, small.handle));
        EXPECT_EQ(PixelOf(mask.handle, 1, 0), 1u);
        EXPECT_EQ(PixelOf(mask.handle, 2, 0), 0u);
        EXPECT_EQ(PixelOf(mask.handle, 0, 1), 0u);
        EXPECT_EQ(PixelOf(composite.handle, 3, 1), 0xFFFFFFu);
    }
}

TEST(Supercompression, A_missing_image_gives_nothing) {
    const Picture picture = FlatPicture(4, 2, 0);
    EXPECT_EQ(UpdateComposite(nullptr, picture.handle), nullptr);
    EXPECT_EQ(UpdateComposite(picture.handle, nullptr), nullptr);
}

}  // namespace
}  // namespace kfx::test
