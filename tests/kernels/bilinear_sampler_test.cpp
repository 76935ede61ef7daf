// SPDX-License-Identifier: MIT
#include "kernels/bilinear_sampler.h"

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "framework/cpu.h"
#include "tests/reference/bilinear_reference.h"
#include "tests/support/pictures.h"

namespace kfx::test {
namespace {

constexpr uint32_t kFallback = 0x0A6450;

// Column 0 is 100 in every channel, column 1 is 200.
Picture TwoColumns() {
    Picture picture = FlatPicture(2, 3, 0x646464);
    const ImageLock lock(picture.handle);
    for (int32_t y = 0; y < 3; ++y) SetDibPixel(lock.image, 1, y, 0xC8C8C8);
    return picture;
}

uint32_t Sample(ImageHandle image, double x, double y) {
    const ImageLock lock(image);
    return SampleBilinear(lock.image, x, y, kFallback);
}

TEST(BilinearSampler, A_whole_numbered_point_blends_four_pixels_equally) {
    EXPECT_EQ(Sample(TwoColumns().handle, 0, 0), 0x969696u);
}

TEST(BilinearSampler, A_point_just_left_of_the_picture_mixes_the_fallback_with_column_zero) {
    const Picture picture = TwoColumns();
    // Three quarters of the way from the fallback to column 0.
    EXPECT_EQ(Sample(picture.handle, -0.75, 0), Rgb((80 + 3 * 100 + 2) / 4, 100, (10 + 3 * 100 + 2) / 4));
    EXPECT_EQ(Sample(picture.handle, -1.5, 0), kFallback);
    EXPECT_EQ(Sample(picture.handle, std::nextafter(-1.5, -2.0), 0), kFallback);
}

TEST(BilinearSampler, Outside_the_picture_is_the_fallback) {
    const Picture picture = TwoColumns();
    for (const double far : {-1.6, -1e300, 1e300, 40.0}) {
        EXPECT_EQ(Sample(picture.handle, far, 1), kFallback);
        EXPECT_EQ(Sample(picture.handle, 1, far), kFallback);
    }
    EXPECT_EQ(Sample(picture.handle, 1.5, 1), kFallback);
    EXPECT_EQ(Sample(picture.handle, 1, 2.5), kFallback);
}

TEST(BilinearSampler, A_point_that_is_no_number_is_the_fallback) {
    const double none = std::numeric_limits<double>::quiet_NaN();
    const double endless = std::numeric_limits<double>::infinity();
    EXPECT_EQ(Sample(TwoColumns().handle, none, 0), kFallback);
    EXPECT_EQ(Sample(TwoColumns().handle, 0, none), kFallback);
    EXPECT_EQ(Sample(TwoColumns().handle, endless, -endless), kFallback);
}

// Points on and right beside every pixel boundary, where x + 1 may round up to the pixel after next.
std::vector<double> TrickyCoordinates(int32_t size) {
    std::vector<double> points;
    for (int32_t i = -2; i <= size + 1; ++i) {
        for (const double base : {double(i), i - 0.5}) {
            points.push_back(base);
            points.push_back(std::nextafter(base, -1e9));
            points.push_back(std::nextafter(std::nextafter(base, -1e9), -1e9));
            points.push_back(std::nextafter(base, 1e9));
            points.push_back(base + 0.3);
            points.push_back(base - 1e-20);
        }
    }
    return points;
}

void ExpectRowsEqualReference(const Picture& picture, const std::vector<double>& x,
                              const std::vector<double>& y) {
    const ImageLock lock(picture.handle);
    const auto count = static_cast<int32_t>(x.size());
    for (const bool avx2 : {true, false}) {
        AllowAvx2(avx2);
        std::vector<uint8_t> row(3 * x.size() + 16, 0xEE);
        SampleRow(lock.image, x.data(), y.data(), count, kFallback, row.data());
        for (size_t i = 0; i < x.size(); ++i) {
            const uint32_t expected = ReferenceBilinear(lock.image, x[i], y[i], kFallback);
            ASSERT_EQ(Rgb(row[3 * i + 2], row[3 * i + 1], row[3 * i]), expected)
                << x[i] << ", " << y[i] << (avx2 ? " AVX2" : " plain");
        }
        for (size_t i = 3 * x.size(); i < row.size(); ++i) ASSERT_EQ(row[i], 0xEE) << "written past the row";
    }
    AllowAvx2(true);
}

TEST(BilinearSampler, Rows_equal_the_reference_on_and_beside_every_pixel_boundary) {
    for (const Size& size : {Size{1, 1}, Size{2, 3}, Size{5, 4}, Size{9, 17}}) {
        const Picture picture = RandomPicture(size.width, size.height, 11);
        for (const double y : TrickyCoordinates(size.height)) {
            const std::vector<double> x = TrickyCoordinates(size.width);
            ExpectRowsEqualReference(picture, x, std::vector<double>(x.size(), y));
        }
    }
}

TEST(BilinearSampler, Rows_of_any_length_equal_the_reference) {
    const Picture picture = RandomPicture(40, 30, 12);
    std::mt19937 random(5);
    for (size_t count = 0; count < 40; ++count) {
        std::vector<double> x(count), y(count);
        for (size_t i = 0; i < count; ++i) {
            x[i] = static_cast<int32_t>(random() % 46000) / 1000.0 - 3;
            y[i] = static_cast<int32_t>(random() % 36000) / 1000.0 - 3;
        }
        ExpectRowsEqualReference(picture, x, y);
    }
}

}  // namespace
}  // namespace kfx::test
