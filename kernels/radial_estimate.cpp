// SPDX-License-Identifier: MIT
#include "kernels/radial_estimate.h"

#include <cmath>
#include <limits>

#include "framework/cpu.h"

#if KFX_HAS_AVX2
#include <immintrin.h>
#endif

namespace kfx {
namespace {

constexpr size_t kCoefficients = 4;

// The polynomial of u, 0 to 1 between the second and the third of four values.
void FitCubic(const double* values, double* coefficients) {
    coefficients[0] = values[1];
    coefficients[1] = values[2] - values[0] / 3 - values[1] / 2 - values[3] / 6;
    coefficients[2] = (values[0] + values[2]) / 2 - values[1];
    coefficients[3] = (values[3] - values[0]) / 6 + (values[1] - values[2]) / 2;
}

// One plane, from values at the ends of its intervals and one farther out.
void FillPlane(const double* knots, int32_t intervals, int32_t first, double* plane) {
    for (int32_t k = 0; k < intervals; ++k) {
        double* const coefficients = plane + kCoefficients * static_cast<size_t>(k);
        if (k >= first)
            FitCubic(knots + k - 1, coefficients);
        else
            for (size_t i = 0; i < kCoefficients; ++i)
                coefficients[i] = std::numeric_limits<double>::quiet_NaN();
    }
}

#if KFX_HAS_AVX2

// Four polynomials at four places: their coefficients stand together, so they are exchanged with the lanes.
KFX_AVX2 inline __m256d Evaluate(const double* plane, __m128i intervals, __m256d u) {
    alignas(16) int32_t at[4];
    _mm_store_si128(reinterpret_cast<__m128i*>(at), _mm_slli_epi32(intervals, 2));
    const __m256d p0 = _mm256_loadu_pd(plane + at[0]);
    const __m256d p1 = _mm256_loadu_pd(plane + at[1]);
    const __m256d p2 = _mm256_loadu_pd(plane + at[2]);
    const __m256d p3 = _mm256_loadu_pd(plane + at[3]);
    const __m256d even01 = _mm256_unpacklo_pd(p0, p1), odd01 = _mm256_unpackhi_pd(p0, p1);
    const __m256d even23 = _mm256_unpacklo_pd(p2, p3), odd23 = _mm256_unpackhi_pd(p2, p3);
    const __m256d c0 = _mm256_permute2f128_pd(even01, even23, 0x20);
    const __m256d c1 = _mm256_permute2f128_pd(odd01, odd23, 0x20);
    const __m256d c2 = _mm256_permute2f128_pd(even01, even23, 0x31);
    const __m256d c3 = _mm256_permute2f128_pd(odd01, odd23, 0x31);
    __m256d value = _mm256_add_pd(_mm256_mul_pd(c3, u), c2);
    value = _mm256_add_pd(_mm256_mul_pd(value, u), c1);
    return _mm256_add_pd(_mm256_mul_pd(value, u), c0);
}

// Four distances; `squares` may lie beyond the region, where the result is of no use.
KFX_AVX2 inline void EstimateFour(const RadialEstimate& estimate, size_t valuesPerPixel, __m256d squares,
                                  double* values, size_t planeSize) {
    const __m256d place = _mm256_mul_pd(_mm256_sqrt_pd(squares), _mm256_set1_pd(estimate.perPixel));
    const __m256d last = _mm256_set1_pd(estimate.intervals - 1);
    const __m256d interval = _mm256_min_pd(_mm256_floor_pd(place), last);
    const __m128i number = _mm256_cvttpd_epi32(interval);
    const __m256d u = _mm256_sub_pd(place, interval);
    const double* plane = estimate.polynomials;
    for (size_t i = 0; i < valuesPerPixel; ++i) {
        _mm256_storeu_pd(values + i * planeSize, Evaluate(plane, number, u));
        plane += kCoefficients * static_cast<size_t>(estimate.intervals);
    }
}

KFX_AVX2 void EstimateRowAvx2(const RadialEstimate& estimate, size_t valuesPerPixel,
                              const double* columnSquares, int32_t count, double rowSquare, double* values,
                              size_t planeSize) {
    const __m256d row = _mm256_set1_pd(rowSquare);
    int32_t k = 0;
    for (; k + 4 <= count; k += 4)
        EstimateFour(estimate, valuesPerPixel, _mm256_add_pd(_mm256_loadu_pd(columnSquares + k), row),
                     values + k, planeSize);
    double squares[4] = {}, rest[4 * kMostValuesPerPixel];
    for (int32_t i = k; i < count; ++i) squares[i - k] = columnSquares[i];
    EstimateFour(estimate, valuesPerPixel, _mm256_add_pd(_mm256_loadu_pd(squares), row), rest, 4);
    for (; k < count; ++k)
        for (size_t plane = 0; plane < valuesPerPixel; ++plane)
            values[plane * planeSize + static_cast<size_t>(k)] = rest[plane * 4 + static_cast<size_t>(k % 4)];
}

#endif

}  // namespace

bool IsEstimated(const EstimatePlan& plan, int64_t pixels) {
    return UseAvx2() && plan.intervals >= 1 && plan.intervals <= kMostIntervals && plan.intervals <= pixels;
}

RadialEstimate KeepRadialEstimate(const EstimatePlan& plan, RadialRow compute, const void* settings,
                                  size_t valuesPerPixel, double radius, int64_t pixels, KeptTable* kept,
                                  const void* key, size_t keyBytes) {
    if (!IsEstimated(plan, pixels)) return {};
    const auto intervals = static_cast<size_t>(plan.intervals);
    bool fresh;
    auto* polynomials = static_cast<double*>(CachedTable(
        kept, key, keyBytes, valuesPerPixel * intervals * kCoefficients * sizeof(double), &fresh));
    if (!polynomials) return {};
    const double width = radius / plan.intervals;
    if (fresh) {
        const size_t knots = intervals + 2;
        const Scratch<double> squares((valuesPerPixel + 1) * knots);
        if (!squares) return {};
        double* const values = squares.address + knots;
        for (size_t k = 0; k < knots; ++k) {
            const double distance = static_cast<double>(k) * width;
            squares.address[k] = distance * distance;
        }
        compute(settings, squares.address, plan.intervals + 2, 0, values, knots);
        const double first = std::ceil(plan.from / width);
        const int32_t firstUsed = first < plan.intervals ? static_cast<int32_t>(first) : plan.intervals;
        for (size_t plane = 0; plane < valuesPerPixel; ++plane)
            FillPlane(values + plane * knots, plan.intervals, firstUsed < 1 ? 1 : firstUsed,
                      polynomials + plane * intervals * kCoefficients);
        KeepTable(kept);
    }
    return {.polynomials = polynomials, .intervals = plan.intervals, .perPixel = 1 / width, .found = !fresh};
}

void EstimateRow([[maybe_unused]] const RadialEstimate& estimate, [[maybe_unused]] size_t valuesPerPixel,
                 [[maybe_unused]] const double* columnSquares, [[maybe_unused]] int32_t count,
                 [[maybe_unused]] double rowSquare, [[maybe_unused]] double* values,
                 [[maybe_unused]] size_t planeSize) {
#if KFX_HAS_AVX2
    EstimateRowAvx2(estimate, valuesPerPixel, columnSquares, count, rowSquare, values, planeSize);
#endif
}

}  // namespace kfx
