// SPDX-License-Identifier: MIT
// Two sums are computed, one that begins below and one that begins above whatever the weights farther out can
// have added, and both are moved apart by as much again after each row. Adding the same number to two sums
// and rounding keeps their order, so the sum over the whole matrix, added in its order, lies between the two.
// Where both give the same byte it is certain. The two are mostly equal after a few rows already.
#include "kernels/emboss_settle.h"

#include <algorithm>
#include <cmath>

#include "framework/cpu.h"

#if KFX_HAS_AVX2
#include <immintrin.h>
#endif

namespace kfx {
namespace {

// What all entries farther out than `reach` add at the most, counted eight times. An addition that is not
// lost in a sum moves it by no more than twice the number added, and an addition of eight times as much moves
// it at least as far as all of them one after the other.
double OuterSum(const EmbossMatrix& matrix, int32_t reach) {
    const int32_t half = matrix.n / 2;
    double sum = 0;
    for (int32_t ky = -half; ky <= half; ++ky)
        for (int32_t kx = -half; kx <= half; ++kx)
            if (std::max(std::abs(kx), std::abs(ky)) > reach)
                sum += std::fabs(matrix.weights[(ky + half) * matrix.n + kx + half]);
    return 8 * 255 * sum;
}

struct Bracket {
    double low[kSettledSamples];
    double high[kSettledSamples];
    bool equal;  // each low sum is the high one
};

constexpr size_t kVectors = kSettledSamples / 4;

// The first samples under the weights that are summed, one row after the other.
const double* FirstSample(const SettlePlan& plan, const double* const* rows, size_t first, int32_t row) {
    return rows[row] + first - 3 * static_cast<ptrdiff_t>(plan.reach);
}

const double* FirstWeight(const SettlePlan& plan, int32_t row) {
    const int32_t n = plan.matrix.n, first = n / 2 - plan.reach;
    return plan.matrix.weights + (first + row) * n + first;
}

#if KFX_HAS_AVX2

// Adds one row of weights to the low sums, and to the high ones when these differ.
template <bool kTwo>
KFX_AVX2 KFX_INLINE void AddRow(const double* weights, int32_t count, const double* samples, __m256d* low,
                                __m256d* high) {
    __m256d first[kVectors], second[kVectors];  // copies: the compiler keeps these in registers
    for (size_t v = 0; v < kVectors; ++v) {
        first[v] = low[v];
        if (kTwo) second[v] = high[v];
    }
    for (int32_t j = 0; j < count; ++j, samples += 3) {
        const __m256d weight = _mm256_broadcast_sd(weights + j);
        for (size_t v = 0; v < kVectors; ++v) {
            const __m256d product = _mm256_mul_pd(weight, _mm256_loadu_pd(samples + 4 * v));
            first[v] = _mm256_add_pd(first[v], product);
            if (kTwo) second[v] = _mm256_add_pd(second[v], product);
        }
    }
    for (size_t v = 0; v < kVectors; ++v) {
        low[v] = first[v];
        high[v] = kTwo ? second[v] : first[v];
    }
}

KFX_AVX2 void SumBracketAvx2(const SettlePlan& plan, const double* const* rows, size_t first, Bracket* sums) {
    const __m256d outer = _mm256_set1_pd(plan.outer);
    const int32_t count = 2 * plan.reach + 1;
    __m256d low[kVectors], high[kVectors];
    for (__m256d& sum : low) sum = _mm256_sub_pd(_mm256_setzero_pd(), outer);
    for (__m256d& sum : high) sum = outer;
    bool equal = plan.outer == 0;
    for (int32_t row = 0; row < count; ++row) {
        const double* samples = FirstSample(plan, rows, first, row);
        if (equal)
            AddRow<false>(FirstWeight(plan, row), count, samples, low, high);
        else
            AddRow<true>(FirstWeight(plan, row), count, samples, low, high);
        __m256d same = _mm256_cmp_pd(outer, outer, _CMP_EQ_OQ);
        for (size_t v = 0; v < kVectors; ++v) {
            low[v] = _mm256_sub_pd(low[v], outer);
            high[v] = _mm256_add_pd(high[v], outer);
            same = _mm256_and_pd(same, _mm256_cmp_pd(low[v], high[v], _CMP_EQ_OQ));
        }
        equal = _mm256_movemask_pd(same) == 15;
    }
    sums->equal = equal;
    for (size_t v = 0; v < kVectors; ++v) {
        _mm256_storeu_pd(sums->low + 4 * v, low[v]);
        _mm256_storeu_pd(sums->high + 4 * v, high[v]);
    }
}

#endif

void SumBracket(const SettlePlan& plan, const double* const* rows, size_t first, Bracket* sums) {
    for (size_t s = 0; s < kSettledSamples; ++s) sums->low[s] = -plan.outer;
    for (size_t s = 0; s < kSettledSamples; ++s) sums->high[s] = plan.outer;
    for (int32_t row = 0; row <= 2 * plan.reach; ++row) {
        const double* samples = FirstSample(plan, rows, first, row);
        const double* weights = FirstWeight(plan, row);
        for (int32_t j = 0; j <= 2 * plan.reach; ++j, samples += 3)
            for (size_t s = 0; s < kSettledSamples; ++s) {
                const double product = weights[j] * samples[s];
                sums->low[s] += product;
                sums->high[s] += product;
            }
        for (size_t s = 0; s < kSettledSamples; ++s) sums->low[s] -= plan.outer;
        for (size_t s = 0; s < kSettledSamples; ++s) sums->high[s] += plan.outer;
    }
    sums->equal = std::equal(sums->low, sums->low + kSettledSamples, sums->high);
}

KFX_INLINE int32_t Rounded(double sum, double divisor) {
    return static_cast<int32_t>(std::min(std::max(sum / divisor, 0.0), 255.0) + 0.5);
}

KFX_INLINE void RoundSums(const double* sums, double divisor, uint8_t* bytes) {
    int32_t levels[kSettledSamples];
    for (size_t s = 0; s < kSettledSamples; ++s) levels[s] = Rounded(sums[s], divisor);
    for (size_t s = 0; s < kSettledSamples; ++s) bytes[s] = static_cast<uint8_t>(levels[s]);
}

}  // namespace

SettlePlan PlanReach(const EmbossMatrix& matrix, int32_t reach) {
    return {.matrix = matrix, .reach = reach, .outer = OuterSum(matrix, reach)};
}

SettlePlan PlanSettling(const EmbossMatrix& matrix) {
    // A sum whose byte is in doubt is at least half a divisor. Less than its last bit hardly ever decides.
    const double lost = std::fabs(matrix.divisor) * 0x1p-50;
    for (int32_t reach = 1; reach < matrix.n / 2; ++reach) {
        const SettlePlan plan = PlanReach(matrix, reach);
        if (plan.outer <= lost) return plan;
    }
    return PlanReach(matrix, matrix.n / 2);
}

bool SettleSamples(const SettlePlan& plan, const double* const* rows, size_t first, uint8_t* bytes) {
    Bracket sums;
#if KFX_HAS_AVX2
    if (UseAvx2())
        SumBracketAvx2(plan, rows, first, &sums);
    else
#endif
        SumBracket(plan, rows, first, &sums);
    const auto roundSums = Fastest<RoundSums>();
    roundSums(sums.low, plan.matrix.divisor, bytes);
    if (sums.equal) return true;
    uint8_t others[kSettledSamples];
    roundSums(sums.high, plan.matrix.divisor, others);
    return std::equal(bytes, bytes + kSettledSamples, others);
}

}  // namespace kfx
