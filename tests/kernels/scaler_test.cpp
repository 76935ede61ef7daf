// SPDX-License-Identifier: MIT
#include "kernels/scaler.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "framework/cpu.h"
#include "framework/math/elementary.h"
#include "framework/random.h"
#include "kernels/resampling_filters.h"
#include "tests/reference/scaler_reference.h"
#include "tests/support/pictures.h"

namespace kfx::test {
namespace {

constexpr double kPi = 3.14159265358979323846;

Size SizeOf(ImageHandle image) {
    const ImageLock lock(image);
    return lock.image ? Size{lock.image->width, lock.image->height} : Size{0, 0};
}

void ExpectSameAsReference(const Picture& source, int32_t width, int32_t height, double blur = 1.0) {
    const Picture expected(ReferenceResample(source.handle, width, height, blur));
    const Picture actual(Resample(source.handle, width, height, blur));
    const Size from = SizeOf(source.handle);
    EXPECT_TRUE(SamePicture(expected.handle, actual.handle))
        << from.width << "x" << from.height << " to " << width << "x" << height << ", blur " << blur;
}

TEST(Scaler, Gives_what_the_plain_two_passes_give) {
    for (const Size& from : TrickySizes()) {
        const Picture source = RandomPicture(from.width, from.height, 11);
        for (const Size& to : {Size{1, 1}, {3, 2}, {2, 9}, {16, 16}, {33, 7}, {7, 50}, from})
            ExpectSameAsReference(source, to.width, to.height);
    }
}

TEST(Scaler, Keeps_every_depth_and_its_colour_table) {
    for (const int32_t bitCount : {1, 4, 8, 32}) {
        const Picture source = RandomPicture(37, 23, 5, bitCount);
        for (const Size& to : {Size{9, 6}, {60, 41}, {10, 40}, {37, 11}}) {
            ExpectSameAsReference(source, to.width, to.height);
            const Picture result(Resample(source.handle, to.width, to.height, 1.0));
            const ImageLock a(source.handle), b(result.handle);
            ASSERT_TRUE(b.image);
            EXPECT_EQ(b.image->bitCount, bitCount);
            EXPECT_EQ(std::memcmp(ColorTableOf(a.image), ColorTableOf(b.image), ColorTableBytes(a.image)), 0);
        }
    }
}

TEST(Scaler, Follows_blur_factors_at_its_own_size_too) {
    const Picture source = ShadedPicture(40, 30, 3);
    for (const double blur : {0.7, 1.0, 2.5}) {
        ExpectSameAsReference(source, 40, 30, blur);
        ExpectSameAsReference(source, 13, 10, blur);
    }
}

TEST(Scaler, Rows_wider_than_one_piece_of_the_cache_have_no_seam) {
    ExpectSameAsReference(RandomPicture(700, 20, 8), 350, 9);
    ExpectSameAsReference(RandomPicture(1400, 3, 8), 140, 3);
}

// Rows are added up in two ways, by the number of weights.
TEST(Scaler, Any_size_gives_what_the_plain_two_passes_give_on_both_paths) {
    RandomSequence random = SeedRandom(7);
    const auto between = [&random](int32_t least, int32_t most) {
        uint16_t number;
        NextRandoms(&random, &number, 1);
        return least + number % (most - least + 1);
    };
    for (int i = 0; i < 120; ++i) {
        const int32_t bitCount = between(0, 3) == 0 ? 32 : 24;
        const Picture source =
            RandomPicture(between(1, 110), between(1, 110), static_cast<uint32_t>(i), bitCount);
        const int32_t most = i % 3 == 0 ? 200 : 60;
        const int32_t width = between(1, most), height = between(1, most);
        const double blur = i % 10 == 0 ? 1.7 : 1.0;
        ExpectSameAsReference(source, width, height, blur);
        AllowAvx2(false);
        ExpectSameAsReference(source, width, height, blur);
        AllowAvx2(true);
    }
}

// With a narrow filter the weights nearly cancel, so that sums are beyond all integers.
TEST(Scaler, Sums_of_any_size_are_cut_off_on_both_paths) {
    for (const double blur : {0.35184134204780937, 0.3518, 0.36, 0.2, 0.05})
        for (int32_t height = 1; height < 12; ++height) {
            const Picture source = RandomPicture(8, 5, 3);
            const Picture fast(Resample(source.handle, 8, height, blur));
            AllowAvx2(false);
            const Picture plain(Resample(source.handle, 8, height, blur));
            AllowAvx2(true);
            EXPECT_TRUE(SamePicture(plain.handle, fast.handle)) << blur << ", " << height;
        }
}

TEST(Scaler, A_hundred_percent_is_an_exact_copy) {
    for (const int32_t bitCount : {1, 4, 8, 24, 32}) {
        const Picture source = RandomPicture(17, 23, 4, bitCount);
        const Picture copy(ScaleByPercentage(source.handle, 100, 100));
        EXPECT_TRUE(SamePicture(source.handle, copy.handle)) << bitCount;
        EXPECT_NE(copy.handle, source.handle);
    }
}

TEST(Scaler, Sides_are_rounded_half_up) {
    const Picture flat = RandomPicture(1000, 10, 1);
    const Picture scaled(ScaleByPercentage(flat.handle, 10, 10));
    EXPECT_EQ(SizeOf(scaled.handle).width, 100);
    EXPECT_EQ(SizeOf(scaled.handle).height, 1);
    const Picture odd = RandomPicture(5, 3, 1);
    const Picture halved(ScaleByPercentage(odd.handle, 50, 50));  // 3.0 and 2.0
    EXPECT_EQ(SizeOf(halved.handle).width, 3);
    EXPECT_EQ(SizeOf(halved.handle).height, 2);
    const Picture stretched(ScaleByPercentage(odd.handle, 29, 250));  // 1.95 and 8.0
    EXPECT_EQ(SizeOf(stretched.handle).width, 1);
    EXPECT_EQ(SizeOf(stretched.handle).height, 8);
}

TEST(Scaler, A_side_has_at_least_one_pixel) {
    const Picture source = RandomPicture(200, 3, 1);
    const Picture scaled(ScaleByPercentage(source.handle, 1, 1));
    EXPECT_EQ(SizeOf(scaled.handle).width, 2);
    EXPECT_EQ(SizeOf(scaled.handle).height, 1);
    const Picture smallest(ScaleByPercentage(source.handle, 0, 0));
    EXPECT_EQ(SizeOf(smallest.handle).width, 1);
    EXPECT_EQ(SizeOf(smallest.handle).height, 1);
}

TEST(Scaler, What_cannot_be_made_is_none) {
    const Picture source = RandomPicture(20, 20, 1);
    EXPECT_EQ(ScaleByPercentage(nullptr, 50, 50), nullptr);
    EXPECT_EQ(ScaleByPercentage(source.handle, -1, 50), nullptr);
    EXPECT_EQ(ScaleByPercentage(source.handle, INT32_MAX, INT32_MAX), nullptr);
    EXPECT_EQ(Resample(source.handle, 0, 5, 1.0), nullptr);
    EXPECT_EQ(Resample(nullptr, 5, 5, 1.0), nullptr);
}

TEST(Scaler, The_source_is_left_unchanged) {
    const Picture source = RandomPicture(50, 40, 1);
    const std::vector<uint8_t> before = BytesOf(source.handle);
    const Picture scaled(ScaleByPercentage(source.handle, 30, 30));
    EXPECT_EQ(BytesOf(source.handle), before);
}

TEST(Scaler, A_flat_picture_stays_flat) {
    const Picture source = FlatPicture(61, 47, 0x3C80FF);
    for (const int32_t percentage : {3, 17, 50, 99, 160}) {
        const Picture scaled(ScaleByPercentage(source.handle, percentage, percentage));
        const Size size = SizeOf(scaled.handle);
        EXPECT_TRUE(SamePicture(FlatPicture(size.width, size.height, 0x3C80FF).handle, scaled.handle))
            << percentage;
    }
}

// A step shows which filter worked: Lanczos overshoots by more than the cubic.
int HighestBeside(int32_t fromWidth, int32_t toWidth) {
    const Picture source = FlatPicture(fromWidth, 1, 0x000000);
    {
        const ImageLock lock(source.handle);
        for (int32_t x = fromWidth / 2; x < fromWidth; ++x) SetDibPixel(lock.image, x, 0, 0xC8C8C8);
    }
    const Picture scaled(Resample(source.handle, toWidth, 1, 1.0));
    int highest = 0;
    for (int32_t x = 0; x < toWidth; ++x)
        highest = std::max(highest, static_cast<int>(RedOf(PixelOf(scaled.handle, x, 0))));
    return highest;
}

TEST(Scaler, Shrinking_uses_lanczos_growing_uses_mitchell) {
    EXPECT_GT(HighestBeside(400, 131), 212);
    EXPECT_GT(HighestBeside(400, 800), 200);
    EXPECT_LT(HighestBeside(400, 800), 212);
}

TEST(Filters, The_table_holds_sixteen_with_their_half_widths) {
    const double supports[] = {0, 0, 0.5, 1, 1, 1, 1, 1, 1.25, 1.5, 2, 2, 2, 3, 3.2383, 4};
    ASSERT_EQ(FilterCount(), std::size(supports));
    for (size_t i = 0; i < FilterCount(); ++i)
        EXPECT_EQ(FilterAt(i).support, supports[i]) << FilterAt(i).name;
    EXPECT_STREQ(FilterAt(kMitchellFilter).name, "Mitchell-Netravali");
    EXPECT_STREQ(FilterAt(kLanczosFilter).name, "Lanczos");
}

TEST(ResamplingFilters, Many_places_have_the_weights_of_each_one) {
    for (size_t i = 0; i < FilterCount(); ++i) {
        const ResamplingFilter& filter = FilterAt(i);
        double places[kMostPlaces], weights[kMostPlaces];
        for (int32_t k = 0; k < kMostPlaces; ++k) places[k] = (k - kMostPlaces / 2) * 0.25 + (k % 3) * 0.01;
        for (const int32_t count : {0, 1, 2, 5, kMostPlaces}) {
            WeighPlaces(filter, places, count, weights);
            for (int32_t k = 0; k < count; ++k)
                EXPECT_EQ(weights[k], filter.weight(places[k], filter.support)) << filter.name << places[k];
        }
    }
}

double WeightAt(size_t filter, double x) { return FilterAt(filter).weight(x, FilterAt(filter).support); }

TEST(Filters, The_two_in_use_follow_their_formulas) {
    EXPECT_DOUBLE_EQ(WeightAt(kMitchellFilter, 0), 8.0 / 9);
    EXPECT_NEAR(WeightAt(kMitchellFilter, 1), 1.0 / 18, 1e-15);
    EXPECT_NEAR(WeightAt(kMitchellFilter, -1.5), -0.034722222222222, 1e-14);
    EXPECT_EQ(WeightAt(kMitchellFilter, 2), 0);
    EXPECT_EQ(WeightAt(kLanczosFilter, 0), 1);
    EXPECT_NEAR(WeightAt(kLanczosFilter, 0.5), 0.607927101854027, 1e-14);
    EXPECT_NEAR(WeightAt(kLanczosFilter, -1.5), -0.135094911523117, 1e-14);
    EXPECT_EQ(WeightAt(kLanczosFilter, 3), 0);
}

TEST(Filters, All_are_even_and_vanish_at_their_half_width) {
    for (size_t i = 3; i < FilterCount(); ++i) {
        for (const double x : {0.1, 0.4, 0.9, 1.3, 2.2})
            EXPECT_NEAR(WeightAt(i, x), WeightAt(i, -x), 1e-14) << FilterAt(i).name;
        if (std::strcmp(FilterAt(i).name, "Gaussian") == 0) continue;  // never quite zero
        if (std::strcmp(FilterAt(i).name, "Hamming") == 0) continue;   // ends on a step
        EXPECT_NEAR(WeightAt(i, FilterAt(i).support - 1e-9), 0, 1e-7) << FilterAt(i).name;
        EXPECT_EQ(WeightAt(i, FilterAt(i).support + 0.1), 0) << FilterAt(i).name;
    }
}

// Filters that interpolate or smooth without a change of brightness add up to 1 over the whole pixels around
// any spot.
TEST(Filters, The_splines_and_cubics_add_up_to_one) {
    for (const size_t filter : {size_t{3}, size_t{4}, size_t{9}, size_t{10}, size_t{11}, kMitchellFilter}) {
        for (const double at : {0.0, 0.2, 0.5, 0.8}) {
            double sum = 0;
            for (int i = -4; i <= 4; ++i) sum += WeightAt(filter, i + at);
            EXPECT_NEAR(sum, 1, 1e-12) << FilterAt(filter).name << " at " << at;
        }
    }
}

TEST(Filters, The_windowed_ones_carry_the_blackman_window) {
    EXPECT_NEAR(WeightAt(7, 0.5), 0.34, 1e-15);
    EXPECT_NEAR(WeightAt(15, 0.5), 0.938508 * 0.636620, 1e-5);
    // J1(pi / 2) = 0.566824088906
    const double window = 0.42 + 0.5 * Cos(kPi * 0.5 / 3.2383) + 0.08 * Cos(2 * kPi * 0.5 / 3.2383);
    EXPECT_NEAR(WeightAt(14, 0.5), window * 0.566824088906, 1e-9);
    EXPECT_NEAR(WeightAt(14, 0), kPi / 4, 1e-12);
}

}  // namespace
}  // namespace kfx::test
