// SPDX-License-Identifier: MIT
#include "kernels/bilinear_sampler.h"

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "framework/cpu.h"
#include "tests/reference/bilinear_reference.h"
#include "tests/support/guarded_memory.h"
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
    for (const double outside : {-1.6, -1e300, 1e300, 40.0}) {
        EXPECT_EQ(Sample(picture.handle, outside, 1), kFallback);
        EXPECT_EQ(Sample(picture.handle, 1, outside), kFallback);
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

struct Points {
    std::vector<double> x, y;
};

void PickPoints(const Points& known, const int32_t* points, int32_t count, double* x, double* y) {
    for (int32_t i = 0; i < count; ++i) {
        x[i] = known.x[static_cast<size_t>(points[i])];
        y[i] = known.y[static_cast<size_t>(points[i])];
    }
}

// The same points exactly and as far off as estimates may be.
struct TestRow {
    Points exact, estimated;
};

void LocatePoint(const void* context, const int32_t* points, int32_t count, double* x, double* y) {
    PickPoints(static_cast<const TestRow*>(context)->exact, points, count, x, y);
}

void EstimatePoint(const void* context, const int32_t* points, int32_t count, double* x, double* y) {
    PickPoints(static_cast<const TestRow*>(context)->estimated, points, count, x, y);
}

TestRow MakeTestRow(const std::vector<double>& x, const std::vector<double>& y) {
    TestRow row = {{x, y}, {x, y}};
    constexpr double kOff = kPlaceError * 0.999;  // and then rounded
    for (size_t i = 0; i < x.size(); ++i) {
        row.estimated.x[i] += i % 2 ? kOff : -kOff;
        row.estimated.y[i] += i % 4 < 2 ? kOff : -kOff;
    }
    return row;
}

void ExpectRowEqualsReference(const WorkingImage* image, const Points& points,
                              const std::vector<uint8_t>& row, const char* way) {
    for (size_t i = 0; i < points.x.size(); ++i) {
        const uint32_t expected = ReferenceBilinear(image, points.x[i], points.y[i], kFallback);
        ASSERT_EQ(Rgb(row[3 * i + 2], row[3 * i + 1], row[3 * i]), expected)
            << points.x[i] << ", " << points.y[i] << ", " << way;
    }
    for (size_t i = 3 * points.x.size(); i < row.size(); ++i)
        ASSERT_EQ(row[i], 0xEE) << "written past the row, " << way;
}

// A row of points as it is sampled without anything kept, as it is when it is kept, and from what was kept.
void ExpectRowsEqualReference(const Picture& picture, const std::vector<double>& x,
                              const std::vector<double>& y) {
    const ImageLock lock(picture.handle);
    const TestRow test = MakeTestRow(x, y);
    const PointRow points = {.count = static_cast<int32_t>(x.size()),
                             .x = test.estimated.x.data(),
                             .y = test.estimated.y.data(),
                             .estimate = EstimatePoint,
                             .locate = LocatePoint,
                             .context = &test};
    const std::vector<uint8_t> empty(3 * x.size() + 16, 0xEE);
    KeptTable table;
    const KeptRow kept = KeptRowAt(KeepPoints(&table, "row", 3, points.count, 1), 0);
    for (const bool avx2 : {true, false}) {
        AllowAvx2(avx2);
        std::vector<uint8_t> row = empty;
        SampleRow(lock.image, points, kFallback, {}, row.data());
        ExpectRowEqualsReference(lock.image, test.exact, row, avx2 ? "AVX2" : "plain");
        if (!kept.groups) continue;
        if (avx2) {
            row = empty;
            SampleRow(lock.image, points, kFallback, kept, row.data());
            ExpectRowEqualsReference(lock.image, test.exact, row, "to be kept");
            ASSERT_TRUE(IsFilled(kept));
        }
        row = empty;
        SampleKeptRow(lock.image, points, kFallback, kept, row.data());
        ExpectRowEqualsReference(lock.image, test.exact, row, avx2 ? "kept" : "kept, plain");
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

// Eight points are blended a turn, and one that is left out takes the others along to the plain path.
TEST(BilinearSampler, One_tricky_column_among_seven_others_equals_the_reference) {
    const Picture picture = RandomPicture(24, 9, 15);
    for (const double tricky : TrickyCoordinates(24))
        for (size_t at = 0; at < 8; ++at) {
            std::vector<double> x(8), y(8);
            for (size_t i = 0; i < 8; ++i) {
                x[i] = i == at ? tricky : 2.31 + 1.7 * static_cast<double>(i);
                y[i] = 0.9 * static_cast<double>(i) - 0.2;
            }
            ExpectRowsEqualReference(picture, x, y);
        }
}

TEST(BilinearSampler, Tricky_rows_of_columns_inside_equal_the_reference) {
    const Picture picture = RandomPicture(24, 9, 16);
    std::vector<double> x;
    for (int i = 0; i < 8; ++i) x.push_back(2.31 + 1.7 * i);
    for (const double tricky : TrickyCoordinates(9)) {
        ExpectRowsEqualReference(picture, x, std::vector<double>(8, tricky));
        for (size_t at = 0; at < 8; ++at) {
            std::vector<double> y(8, 3.3);
            y[at] = tricky;
            ExpectRowsEqualReference(picture, x, y);
        }
    }
}

// Rows of this width have no padding, and the top row is the last one in memory.
TEST(BilinearSampler, Nothing_behind_the_last_pixel_is_read) {
    const GuardedMemory guarded(GuardSide::Behind);
    const Picture picture = RandomPicture(16, 4, 17);
    for (int column = 6; column < 17; ++column)
        for (const double right : {0.1, 0.9})
            ExpectRowsEqualReference(picture, std::vector<double>(8, column - 0.5 + right),
                                     std::vector<double>(8, -0.3));
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

// Black and white at random, so that neighbours differ as much as they can.
Picture BlackAndWhite(int32_t width, int32_t height) {
    Picture picture = FlatPicture(width, height, 0);
    const ImageLock lock(picture.handle);
    std::mt19937 random(3);
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x) SetDibPixel(lock.image, x, y, random() % 2 ? 0xFFFFFF : 0);
    return picture;
}

TEST(BilinearSampler, Points_on_and_beside_rounding_boundaries_equal_the_reference) {
    const Picture picture = BlackAndWhite(64, 48);
    std::vector<double> x, y;
    for (int level = 0; level < 255; ++level)
        for (const double beside :
             {0.0, 1e-16, -1e-16, 1e-9, -1e-9, 1e-6, 1.5e-5, -1.5e-5, 3.1e-5, -3.1e-5, 1e-4})
            for (const double down : {0.0, 0.25, 0.5, 0.999, (level + 0.5) / 255}) {
                // The exact value of the level and a half, where both rows are black and then white.
                x.push_back(static_cast<double>(x.size() % 55) - 0.5 + (level + 0.5) / 255 + beside);
                y.push_back(static_cast<double>(x.size() % 41) - 0.5 + down);
            }
    ExpectRowsEqualReference(picture, x, y);
    ExpectRowsEqualReference(picture, y, x);
}

TEST(BilinearSampler, Long_rows_of_random_points_equal_the_reference) {
    const Picture picture = RandomPicture(300, 200, 13);
    std::mt19937 random(6);
    std::uniform_real_distribution<double> across(-2, 302);
    std::uniform_real_distribution<double> down(-2, 202);
    std::vector<double> x(100003), y(100003);
    for (size_t i = 0; i < x.size(); ++i) {
        // Mostly inside, so that few groups of points are left to the plain path.
        x[i] = i % 50 ? 10 + across(random) * 0.9 : across(random);
        y[i] = i % 50 ? 5 + down(random) * 0.9 : down(random);
    }
    ExpectRowsEqualReference(picture, x, y);
}

TEST(BilinearSampler, Columns_beyond_16_bits_equal_the_reference) {
    const Picture picture = RandomPicture(70001, 3, 14);
    std::vector<double> x, y;
    for (double place = 65000.25; place < 70003; place += 0.37) {
        x.push_back(place);
        y.push_back(std::fmod(place, 2.0));
    }
    ExpectRowsEqualReference(picture, x, y);
}

}  // namespace
}  // namespace kfx::test
