// SPDX-License-Identifier: MIT
#include "kernels/emboss_settle.h"

#include <cmath>
#include <iterator>
#include <vector>

#include "framework/cpu.h"
#include "kernels/convolution.h"
#include "tests/support/pictures.h"

namespace kfx::test {
namespace {

// Emboss's weights with a bell of this spread.
std::vector<double> Weights(int32_t n, double sigma) {
    std::vector<double> weights;
    const int32_t half = n / 2;
    for (int32_t ky = -half; ky <= half; ++ky)
        for (int32_t kx = -half; kx <= half; ++kx) {
            const double bell = std::exp(-(kx * kx + ky * ky) / (sigma * sigma));
            weights.push_back(kx == -ky ? 0 : kx >= 0 && ky >= 0 ? 8 * bell : -8 * bell);
        }
    return weights;
}

// A slope, with a little noise in every other row of tiles.
Picture Slopes(int32_t width, int32_t height) {
    Picture picture = FlatPicture(width, height, 0);
    const ImageLock lock(picture.handle);
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x) {
            const auto slope = static_cast<uint32_t>((x + y) / 2 & 255);
            const auto noise = static_cast<uint32_t>(y / 8 % 2 ? x * y * 7 % 3 : 0);
            SetDibPixel(lock.image, x, y, Rgb(slope + noise, 200 - slope, 128));
        }
    return picture;
}

struct Settled {
    int32_t certain = 0;
    int32_t uncertain = 0;
};

// Settles all blocks whose matrix lies inside the picture; those that are certain have ConvolvePixel's bytes.
Settled SettlePicture(const SettlePlan& plan, const WorkingImage* image) {
    Settled count;
    const int32_t half = plan.matrix.n / 2, reach = plan.reach;
    const size_t samples = 3 * static_cast<size_t>(image->width);
    const size_t border = 3 * static_cast<size_t>(half);
    std::vector<std::vector<double>> rows;
    rows.reserve(static_cast<size_t>(image->height));
    for (int32_t r = 0; r < image->height; ++r)
        rows.emplace_back(StoredRow(image, r), StoredRow(image, r) + samples);
    for (int32_t r = half; r + half < image->height; ++r) {
        std::vector<const double*> around;
        for (int32_t k = -reach; k <= reach; ++k) around.push_back(std::next(rows.begin(), r + k)->data());
        for (size_t first = border; first + kSettledSamples + border <= samples; first += kSettledSamples) {
            uint8_t bytes[kSettledSamples];
            if (!SettleSamples(plan, around.data(), first, bytes)) {
                ++count.uncertain;
                continue;
            }
            ++count.certain;
            for (size_t s = 0; s < kSettledSamples; s += 3) {
                uint8_t expected[3];
                ConvolvePixel(image, plan.matrix.n, plan.matrix.weights, plan.matrix.divisor,
                              static_cast<int32_t>((first + s) / 3), r, expected);
                for (size_t c = 0; c < 3; ++c)
                    EXPECT_EQ(bytes[s + c], expected[c]) << "reach " << reach << ", row " << r;
            }
        }
    }
    return count;
}

TEST(SettleSamples, Bytes_that_are_certain_are_those_of_the_whole_matrix) {
    const Picture picture = Slopes(120, 40);
    const ImageLock lock(picture.handle);
    for (const bool avx2 : {false, true}) {
        AllowAvx2(avx2);
        for (const double sigma : {0.4, 0.5, 0.7, 1.0}) {
            const std::vector<double> weights = Weights(15, sigma);
            const EmbossMatrix matrix = {15, weights.data(), MatrixDivisor(15, weights.data())};
            Settled all;
            for (int32_t reach = 1; reach <= 7; ++reach) {
                const Settled settled = SettlePicture(PlanReach(matrix, reach), lock.image);
                all.certain += settled.certain;
                all.uncertain += settled.uncertain;
                EXPECT_TRUE(reach < 7 || settled.uncertain == 0) << "nothing is left out";
            }
            EXPECT_GT(all.certain, 0);
            EXPECT_GT(all.uncertain, 0) << "too small a reach decides nothing on a slope";
        }
    }
    AllowAvx2(true);
}

TEST(SettleSamples, The_reach_that_is_chosen_settles_nearly_every_block) {
    const Picture picture = Slopes(120, 40);
    const ImageLock lock(picture.handle);
    for (const double sigma : {0.4, 0.5, 0.7}) {
        const std::vector<double> weights = Weights(25, sigma);
        const EmbossMatrix matrix = {25, weights.data(), MatrixDivisor(25, weights.data())};
        const SettlePlan plan = PlanSettling(matrix);
        EXPECT_LT(plan.reach, 12) << "sigma " << sigma;
        const Settled settled = SettlePicture(plan, lock.image);
        EXPECT_LT(settled.uncertain, settled.certain / 100) << "sigma " << sigma;
    }
}

// The weights farther out are lost in all sums but that of a sample with black around it.
TEST(SettleSamples, A_single_sample_in_doubt_leaves_the_whole_block_in_doubt) {
    constexpr int32_t kSide = 5;
    constexpr size_t kReach = 1, kMargin = 3 * kReach;
    std::vector<double> weights(size_t{kSide} * kSide, 1);
    for (size_t row = 1; row <= 3; ++row)
        for (size_t column = 1; column <= 3; ++column) weights[row * kSide + column] = 0x1p80;
    const SettlePlan plan = PlanReach({.n = kSide, .weights = weights.data(), .divisor = 16}, kReach);
    for (const bool avx2 : {false, true}) {
        AllowAvx2(avx2);
        for (size_t doubtful = 0; doubtful < kSettledSamples; ++doubtful) {
            std::vector<double> samples(kSettledSamples + 2 * kMargin, 255);
            for (size_t neighbor = 0; neighbor <= 2 * kMargin; neighbor += 3)
                samples[doubtful + neighbor] = 0;
            const double* const rows[] = {samples.data() + kMargin, samples.data() + kMargin,
                                          samples.data() + kMargin};
            uint8_t bytes[kSettledSamples];
            EXPECT_FALSE(SettleSamples(plan, rows, 0, bytes)) << "sample " << doubtful;
        }
        const std::vector<double> white(kSettledSamples + 2 * kMargin, 255);
        const double* const rows[] = {white.data() + kMargin, white.data() + kMargin, white.data() + kMargin};
        uint8_t bytes[kSettledSamples];
        EXPECT_TRUE(SettleSamples(plan, rows, 0, bytes));
    }
    AllowAvx2(true);
}

}  // namespace
}  // namespace kfx::test
