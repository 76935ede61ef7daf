// SPDX-License-Identifier: MIT
#include "kernels/radial_estimate.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "framework/cpu.h"
#include "kernels/bilinear_sampler.h"
#include "kernels/implosion.h"
#include "kernels/twist.h"

namespace kfx::test {
namespace {

constexpr int64_t kManyPixels = 1 << 30;

// Places of `count` pixels of one row, from estimated or from exact values.
struct Places {
    std::vector<double> x, y;
};

Places PlacesOf(const RegionDistortion& distortion, const std::vector<double>& offsets, double rowOffset,
                const std::vector<double>& values) {
    Places places = {std::vector<double>(offsets.size()), std::vector<double>(offsets.size())};
    std::vector<int32_t> distances(offsets.size());
    for (size_t i = 0; i < distances.size(); ++i) distances[i] = static_cast<int32_t>(i);
    const auto count = static_cast<int32_t>(offsets.size());
    distortion.locate({.count = count,
                       .columnOffsets = offsets.data(),
                       .distances = distances.data(),
                       .rowOffset = rowOffset,
                       .values = values.data(),
                       .valueCount = count,
                       .x = places.x.data(),
                       .y = places.y.data()});
    return places;
}

struct Deviation {
    double farthest;  // pixels
    double leftOut;   // the part of the pixels without an estimate
};

// Pixels all over the region, most of them at random.
Deviation Measure(const RegionDistortion& distortion) {
    KeptTable kept;
    const RadialEstimate estimate =
        KeepRadialEstimate(distortion.plan, distortion.compute, distortion.settings,
                           distortion.valuesPerPixel, distortion.radius, kManyPixels, &kept, "", 0);
    EXPECT_TRUE(estimate.polynomials) << "radius " << distortion.radius;
    if (!estimate.polynomials) return {};
    std::mt19937 random(1);
    std::uniform_real_distribution<double> anywhere(-distortion.radius, distortion.radius);
    Deviation deviation = {};
    double pixels = 0;
    for (int row = 0; row < 200; ++row) {
        const double rowOffset = row ? anywhere(random) : 0;
        std::vector<double> offsets, squares;
        const double half = std::sqrt(distortion.radius * distortion.radius - rowOffset * rowOffset);
        std::uniform_real_distribution<double> within(-half, half);
        for (int i = 0; i < 203; ++i) {
            offsets.push_back(i ? within(random) : half * (1 - 1e-12));
            squares.push_back(offsets.back() * offsets.back());
        }
        const size_t count = offsets.size();
        std::vector<double> exact(2 * count), estimated(2 * count);
        distortion.compute(distortion.settings, squares.data(), static_cast<int32_t>(count),
                           rowOffset * rowOffset, exact.data(), count);
        EstimateRow(estimate, distortion.valuesPerPixel, squares.data(), static_cast<int32_t>(count),
                    rowOffset * rowOffset, estimated.data(), count);
        const Places right = PlacesOf(distortion, offsets, rowOffset, exact);
        const Places close = PlacesOf(distortion, offsets, rowOffset, estimated);
        for (size_t i = 0; i < count; ++i, ++pixels) {
            if (std::isnan(close.x[i]) || std::isnan(close.y[i])) {
                ++deviation.leftOut;
                continue;
            }
            deviation.farthest = std::max(
                {deviation.farthest, std::fabs(close.x[i] - right.x[i]), std::fabs(close.y[i] - right.y[i])});
        }
    }
    deviation.leftOut /= pixels;
    return deviation;
}

class RadialEstimateTest : public testing::Test {
protected:
    void SetUp() override {
        if (!UseAvx2()) GTEST_SKIP() << "estimates need AVX2";
    }
};

constexpr double kRadii[] = {8, 50.5, 320, 960, 4096, 16384};

TEST_F(RadialEstimateTest, Pulled_pixels_are_no_farther_off_than_told) {
    for (const double radius : kRadii) {
        for (const double exponent : {-1.0, -0.99, -0.5, -0.01, 0.0, 0.01, 0.5, 0.99, 1.0}) {
            const Pull pull = {radius, exponent};
            const Deviation deviation = Measure(MakeImplosion(pull));
            // The plan's bound of the fourth derivative is a generous one. With twice the interval, or half
            // of the disc that is left out, pixels would be sixteen times as far off.
            EXPECT_LE(deviation.farthest, kPlaceError / 10) << radius << ", " << exponent;
            EXPECT_LT(deviation.leftOut, radius > 100 && radius < 5000 ? 0.05 : 0.2)
                << radius << ", " << exponent;
        }
    }
}

TEST_F(RadialEstimateTest, Turned_pixels_are_no_farther_off_than_told) {
    for (const double radius : kRadii) {
        for (const double degrees : {0.0, 1.0, -45.0, 360.0, 1440.0, -1440.0}) {
            const Turn turn = {radius, degrees * 3.141592653589793 / 180};
            const Deviation deviation = Measure(MakeTwist(turn));
            EXPECT_LE(deviation.farthest, kPlaceError / 2) << radius << ", " << degrees;
            EXPECT_LT(deviation.leftOut, 0.01) << radius << ", " << degrees;
        }
    }
}

// What a file may hold where a slider does not go.
TEST_F(RadialEstimateTest, Settings_beyond_the_sliders_have_no_estimates) {
    for (const double exponent : {-1.01, 1.01, 1e6, -21474836.48}) {
        const Pull pull = {100, exponent};
        EXPECT_EQ(MakeImplosion(pull).plan.intervals, 0) << exponent;
    }
    for (const double radius : {0.0, 0.5, -3.0}) {
        const Pull pull = {radius, -0.5};
        EXPECT_EQ(MakeImplosion(pull).plan.intervals, 0) << radius;
        const Turn turn = {radius, 1};
        EXPECT_EQ(MakeTwist(turn).plan.intervals, 0) << radius;
    }
    const Turn turn = {100, 3e7};
    EXPECT_EQ(MakeTwist(turn).plan.intervals, 0);
}

void AddCubes(const void*, const double* columnSquares, int32_t count, double rowSquare, double* values,
              size_t planeSize) {
    for (int32_t i = 0; i < count; ++i) {
        const double distance = std::sqrt(columnSquares[i] + rowSquare);
        values[i] = distance * distance * distance - 2 * distance;
        values[planeSize + static_cast<size_t>(i)] = 5 - distance * distance;
    }
}

TEST_F(RadialEstimateTest, Cubic_polynomials_are_met_in_both_planes_and_in_rows_of_any_length) {
    KeptTable kept;
    const EstimatePlan plan = {.intervals = 16, .from = 2};
    const RadialEstimate estimate = KeepRadialEstimate(plan, AddCubes, nullptr, 2, 8, 100, &kept, "", 0);
    ASSERT_TRUE(estimate.polynomials);
    for (int32_t count = 0; count < 14; ++count) {
        std::vector<double> squares, values(40, -1), exact(40, -1);
        for (int32_t i = 0; i < count; ++i) squares.push_back(4 + 4.1 * i);
        EstimateRow(estimate, 2, squares.data(), count, 0.5, values.data(), 20);
        AddCubes(nullptr, squares.data(), count, 0.5, exact.data(), 20);
        for (size_t i = 0; i < values.size(); ++i)
            EXPECT_NEAR(values[i], exact[i], 1e-10) << count << ", " << i;
    }
}

TEST_F(RadialEstimateTest, Distances_that_the_plan_leaves_out_have_none) {
    KeptTable kept;
    const RadialEstimate estimate =
        KeepRadialEstimate({.intervals = 16, .from = 2.1}, AddCubes, nullptr, 2, 8, 100, &kept, "", 0);
    const double squares[] = {0, 2.49 * 2.49, 2.51 * 2.51, 7.99 * 7.99};
    double values[8];
    EstimateRow(estimate, 2, squares, 4, 0, values, 4);
    for (const int i : {0, 1, 4, 5}) EXPECT_TRUE(std::isnan(values[i])) << i;
    for (const int i : {2, 3, 6, 7}) EXPECT_FALSE(std::isnan(values[i])) << i;
}

TEST_F(RadialEstimateTest, Small_pictures_and_processors_without_AVX2_have_none) {
    KeptTable kept;
    const EstimatePlan plan = {.intervals = 16, .from = 0};
    const auto keep = [&](int64_t pixels) {
        return KeepRadialEstimate(plan, AddCubes, nullptr, 2, 8, pixels, &kept, "", 0);
    };
    EXPECT_FALSE(keep(15).polynomials);
    EXPECT_TRUE(keep(16).polynomials);
    EXPECT_TRUE(keep(16).found);
    AllowAvx2(false);
    EXPECT_FALSE(keep(16).polynomials);
    AllowAvx2(true);
}

}  // namespace
}  // namespace kfx::test
