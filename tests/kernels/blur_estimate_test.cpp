// SPDX-License-Identifier: MIT
#include "kernels/blur_estimate.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "kernels/bell_weights.h"

namespace kfx::test {
namespace {

#if KFX_HAS_AVX2

int32_t SumInOrder(const std::vector<float>& weights, const uint16_t* const* rows, size_t s) {
    float sum = 0;
    for (size_t j = 0; j < weights.size(); ++j) sum += weights[j] * rows[j][s];
    return static_cast<int32_t>(sum + 0.5);
}

// Samples of n rows side by side, with room behind the last one.
struct Rows {
    Rows(int32_t n, size_t samples, uint32_t fill)
        : count(samples),
          words(static_cast<size_t>(n) * (samples + kEstimateRoom), static_cast<uint16_t>(fill)) {
        for (int32_t j = 0; j < n; ++j)
            rows.push_back(words.data() + static_cast<size_t>(j) * (count + kEstimateRoom));
    }
    uint16_t* Row(size_t j) { return words.data() + j * (count + kEstimateRoom); }

    const size_t count;
    std::vector<uint16_t> words;
    std::vector<const uint16_t*> rows;
};

void ExpectSumsInOrder(const std::vector<float>& weights, const Rows& rows) {
    BlurEstimate estimate;
    ASSERT_TRUE(MakeBlurEstimate(weights.data(), static_cast<int32_t>(weights.size()), &estimate));
    std::vector<uint16_t> words(rows.count + kEstimateRoom, 0xEEEE);
    std::vector<uint8_t> bytes(rows.count + 1, 0xEE);
    BlurToWords(estimate, rows.rows.data(), rows.count, words.data());
    BlurToBytes(estimate, rows.rows.data(), rows.count, bytes.data());
    for (size_t s = 0; s < rows.count; ++s) {
        const int32_t expected = SumInOrder(weights, rows.rows.data(), s);
        ASSERT_EQ(words[s], expected) << weights.size() << " taps, sample " << s;
        ASSERT_EQ(bytes[s], expected) << weights.size() << " taps, sample " << s;
    }
    ASSERT_EQ(bytes[rows.count], 0xEE) << "written behind the last sample";
}

std::vector<float> Bell(int32_t n, int32_t radius) {
    std::vector<float> weights(static_cast<size_t>(n));
    BuildBlurWeights(n, static_cast<float>(radius / 10.0), weights.data());
    return weights;
}

class BlurEstimates : public ::testing::Test {
protected:
    void SetUp() override {
        if (!UseAvx2()) GTEST_SKIP() << "this processor has no AVX2";
    }
};

TEST_F(BlurEstimates, Are_the_sums_in_order_for_every_bell_of_the_panel) {
    std::mt19937 random(9);
    for (const int32_t n : {5, 7, 9, 11})
        for (int32_t radius = 1; radius <= 60; ++radius) {
            Rows rows(n, 6000, 0);
            for (size_t j = 0; j < static_cast<size_t>(n); ++j)
                for (size_t s = 0; s < rows.count; ++s) {
                    const auto any = static_cast<uint32_t>(random());
                    // Noise, black beside white, and smooth places.
                    rows.Row(j)[s] = static_cast<uint16_t>(s < 3000   ? any & 255
                                                           : s < 4500 ? (any & 1) * 255
                                                                      : (s / 6 + j + (any & 1)) & 255);
                }
            ExpectSumsInOrder(Bell(n, radius), rows);
        }
}

// Many sums in order would take more time than the estimates save.
TEST_F(BlurEstimates, Leave_few_sums_of_the_panels_bells_in_doubt) {
    for (const int32_t n : {5, 7, 9, 11})
        for (int32_t radius = 4; radius <= 45; ++radius) {
            const std::vector<float> weights = Bell(n, radius);
            BlurEstimate estimate;
            ASSERT_TRUE(MakeBlurEstimate(weights.data(), n, &estimate));
            EXPECT_LT(50 * estimate.doubt, 1 << estimate.shift) << n << " taps, radius " << radius;
        }
}

TEST_F(BlurEstimates, Of_flat_places_are_the_sums_in_order) {
    for (const int32_t n : {5, 7, 9, 11})
        for (const int32_t radius : {1, 4, 5, 20, 45, 1000000})
            for (uint32_t level = 0; level < 256; ++level)
                ExpectSumsInOrder(Bell(n, radius), Rows(n, 40, level));
}

TEST_F(BlurEstimates, Any_number_of_samples_is_written_and_no_more) {
    for (size_t count = 0; count < 70; ++count) ExpectSumsInOrder(Bell(5, 9), Rows(5, count, 77));
}

// Sums of these lie on and beside the boundaries that an estimate must not cross.
TEST_F(BlurEstimates, Next_to_a_rounding_boundary_are_the_sums_in_order) {
    std::mt19937 random(4);
    for (const int32_t n : {5, 7, 9, 11}) {
        const std::vector<float> weights = Bell(n, 12);
        Rows rows(n, 4096, 0);
        std::vector<uint16_t> tried(static_cast<size_t>(n));
        for (size_t s = 0; s < rows.count;) {
            double sum = 0.5;
            for (size_t j = 0; j < tried.size(); ++j) {
                tried[j] = static_cast<uint16_t>(random() & 255);
                sum += double{weights[j]} * tried[j];
            }
            const double above = sum - static_cast<int32_t>(sum);
            if (above > 0.003 && above < 0.997) continue;
            for (size_t j = 0; j < tried.size(); ++j) rows.Row(j)[s] = tried[j];
            ++s;
        }
        ExpectSumsInOrder(weights, rows);
    }
}

// These weights are exact in whole numbers, and the exact sum is below a boundary by a few units of 2^-17. In
// single precision it is rounded to the boundary.
TEST_F(BlurEstimates, Of_exact_weights_are_the_rounded_sums_in_order) {
    const struct {
        std::vector<int32_t> weights;  // in units of 2^-17
        std::vector<uint16_t> samples;
    } kCases[] = {
        {{8313, 19006, 24264, 27906, 24264, 19006, 8313}, {185, 82, 51, 173, 175, 252, 247}},
        {{8259, 17480, 24339, 30916, 24339, 17480, 8259}, {95, 248, 206, 249, 194, 168, 175}},
        {{2089, 9712, 17432, 17755, 37096, 17755, 17432, 9712, 2089},
         {243, 189, 230, 140, 238, 165, 147, 139, 32}},
        {{3887, 1343, 16175, 6899, 74464, 6899, 16175, 1343, 3887},
         {169, 97, 174, 179, 160, 82, 244, 153, 125}},
        {{13125, 7791, 8583, 11011, 50052, 11011, 8583, 7791, 13125},
         {171, 115, 168, 56, 254, 185, 149, 241, 132}},
        {{4583, 7115, 3605, 19945, 15814, 28948, 15814, 19945, 3605, 7115, 4583},
         {195, 217, 188, 198, 168, 107, 106, 84, 77, 140, 69}},
    };
    for (const auto& [whole, samples] : kCases) {
        std::vector<float> weights;
        for (const int32_t weight : whole) weights.push_back(std::ldexp(static_cast<float>(weight), -17));
        Rows rows(static_cast<int32_t>(weights.size()), 32, 0);
        for (size_t j = 0; j < samples.size(); ++j) std::fill_n(rows.Row(j), rows.count, samples[j]);
        ExpectSumsInOrder(weights, rows);
    }
}

TEST_F(BlurEstimates, Are_made_for_these_numbers_of_taps_only) {
    BlurEstimate estimate;
    for (int32_t n = 1; n < 20; ++n)
        EXPECT_EQ(MakeBlurEstimate(Bell(n, 10).data(), n, &estimate), n == 5 || n == 7 || n == 9 || n == 11)
            << n;
}

#endif

}  // namespace
}  // namespace kfx::test
