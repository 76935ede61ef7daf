// SPDX-License-Identifier: MIT
#include "effects/effects.h"

#include <algorithm>
#include <cmath>

#include "tests/effects/expected_controls.h"
#include "tests/support/effect_checks.h"

namespace kfx::test {
namespace {

TEST(Neon, Has_these_controls) { ExpectControls(kNeon, "Neon", 7416, {}); }

TEST(Neon, Equals_its_reference_on_pictures_of_all_sizes) { ExpectReferenceOnTrickyPictures(kNeon, {}); }

TEST(Neon, Single_precision_truncates_to_the_defined_byte_for_every_sum_of_squares) {
    for (int32_t squares = 0; squares <= 2 * 765 * 765; ++squares) {
        const auto defined =
            std::min(255, static_cast<int32_t>(std::sqrt(static_cast<double>(squares)) / 1.8));
        const float length = std::sqrt(static_cast<float>(squares)) * 0.555555582f;
        ASSERT_EQ(length > 255.0f ? 255 : static_cast<int32_t>(length), defined) << squares;
    }
}

TEST(Neon, A_uniform_picture_becomes_black) {
    const Picture source = FlatPicture(6, 5, 0xC8640A);
    EXPECT_TRUE(SamePicture(FlatPicture(6, 5, 0).handle, Apply(kNeon, source.handle, {}).handle));
}

TEST(Neon, A_boundary_between_black_and_white_saturates_on_both_sides) {
    Picture source = FlatPicture(8, 4, 0);
    {
        const ImageLock lock(source.handle);
        for (int32_t y = 0; y < 4; ++y)
            for (int32_t x = 4; x < 8; ++x) SetDibPixel(lock.image, x, y, 0xFFFFFF);
    }
    const Picture result = Apply(kNeon, source.handle, {});
    for (int32_t y = 0; y < 4; ++y)
        for (int32_t x = 0; x < 8; ++x)
            EXPECT_EQ(PixelOf(result.handle, x, y), x == 3 || x == 4 ? 0xFFFFFFu : 0u) << x << ", " << y;
}

TEST(Neon, Outer_rows_and_columns_see_the_gradient_toward_the_inside_only) {
    // A ramp of 10 a column: inside h = 3 * 20, at the edges 3 * 10.
    Picture source(CreateDib(6, 3, nullptr, 24));
    {
        const ImageLock lock(source.handle);
        for (int32_t y = 0; y < 3; ++y)
            for (int32_t x = 0; x < 6; ++x)
                SetDibPixel(lock.image, x, y, static_cast<uint32_t>(10 * x) * 0x010101);
    }
    const Picture result = Apply(kNeon, source.handle, {});
    EXPECT_EQ(PixelOf(result.handle, 0, 1), 16u * 0x010101);  // 30 / 1.8
    EXPECT_EQ(PixelOf(result.handle, 5, 1), 16u * 0x010101);
    EXPECT_EQ(PixelOf(result.handle, 2, 1), 33u * 0x010101);  // 60 / 1.8
    EXPECT_EQ(PixelOf(result.handle, 2, 0), 33u * 0x010101);
}

TEST(Neon, Refused_memory_is_survived) {
    ExpectRefusedMemoryIsSurvived(kNeon, RandomPicture(9, 8, 1).handle, {});
}

}  // namespace
}  // namespace kfx::test
