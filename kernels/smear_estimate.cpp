// SPDX-License-Identifier: MIT
#include "kernels/smear_estimate.h"

#include <algorithm>

#include "kernels/vector_bytes.h"

namespace kfx {
namespace {

constexpr int32_t kLowBits = 13;
constexpr int32_t kFractionBits = 14;  // of a high part: units of 2^-27 times 2^13

}  // namespace

void RoundWeights(const double* weights, int32_t count, WholeWeights* whole) {
    constexpr double kUnits = static_cast<double>(1 << (kLowBits + kFractionBits));
    const auto parts = [&](int32_t i, int32_t* high, int32_t* low) {
        const auto units = i < count ? static_cast<int32_t>(weights[i] * kUnits + 0.5) : 0;
        *high = units >> kLowBits;
        *low = units & ((1 << kLowBits) - 1);
    };
    whole->highRest[count] = whole->lowRest[count] = 0;
    whole->highRest[count + 1] = whole->lowRest[count + 1] = 0;
    for (int32_t i = count - 1; i >= 0; --i) {
        int32_t high, low;
        parts(i, &high, &low);
        whole->highRest[i] = whole->highRest[i + 1] + high;
        whole->lowRest[i] = whole->lowRest[i + 1] + low;
    }
    for (int32_t i = 0; i < count; i += 2) {
        int32_t high[2], low[2];
        for (int32_t k = 0; k < 2; ++k) parts(i + k, &high[k], &low[k]);
        whole->highPairs[i / 2] = high[0] | high[1] << 16;
        whole->lowPairs[i / 2] = low[0] | low[1] << 16;
    }
    // Each weight is off by at most half a unit, which counts 255 times. One unit is added for the roundings
    // of the ordered sum in double precision, which are far smaller, and one for the last bits of the low
    // parts, which are lost.
    whole->margin = count * 255 / (2 << kLowBits) + 3;
}

#if KFX_HAS_AVX2
namespace {

struct Sums {
    int32_t high[kSmearSamples];
    int32_t low[kSmearSamples];
};

KFX_AVX2 inline void SumPairs(const WholeWeights& weights, const uint8_t* const* samples, int32_t pairs,
                              Sums* sums) {
    __m256i high[6], low[6];
    for (int v = 0; v < 6; ++v) high[v] = low[v] = _mm256_setzero_si256();
    for (int32_t i = 0; i < pairs; ++i) {
        const __m256i highPair = _mm256_set1_epi32(weights.highPairs[i]);
        const __m256i lowPair = _mm256_set1_epi32(weights.lowPairs[i]);
        for (int v = 0; v < 3; ++v) {
            const __m128i first = LoadBytes(samples[2 * i] + 16 * v);
            const __m128i second = LoadBytes(samples[2 * i + 1] + 16 * v);
            const __m256i left = _mm256_cvtepu8_epi16(_mm_unpacklo_epi8(first, second));
            const __m256i right = _mm256_cvtepu8_epi16(_mm_unpackhi_epi8(first, second));
            high[2 * v] = _mm256_add_epi32(high[2 * v], _mm256_madd_epi16(left, highPair));
            low[2 * v] = _mm256_add_epi32(low[2 * v], _mm256_madd_epi16(left, lowPair));
            high[2 * v + 1] = _mm256_add_epi32(high[2 * v + 1], _mm256_madd_epi16(right, highPair));
            low[2 * v + 1] = _mm256_add_epi32(low[2 * v + 1], _mm256_madd_epi16(right, lowPair));
        }
    }
    for (int v = 0; v < 6; ++v) {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(sums->high + 8 * v), high[v]);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(sums->low + 8 * v), low[v]);
    }
}

}  // namespace

KFX_AVX2 bool SumWholeWeights(const WholeWeights& weights, const uint8_t* const* samples, int32_t pairs,
                              const uint8_t* background, uint8_t* out, uint8_t* doubts) {
    Sums sums;
    SumPairs(weights, samples, pairs, &sums);
    const int32_t highRest = weights.highRest[2 * pairs];
    const int32_t lowRest = weights.lowRest[2 * pairs];
    const int32_t least = weights.margin;
    const auto certain = static_cast<uint32_t>((1 << kFractionBits) - 1 - 2 * weights.margin);
    if (highRest | lowRest)
        for (int32_t s = 0; s < kSmearSamples; ++s) {
            sums.high[s] += highRest * background[s];
            sums.low[s] += lowRest * background[s];
        }
    uint32_t any = 0;
    uint32_t fromLeast[kSmearSamples];  // a fraction in doubt wraps around or lies beyond the certain ones
    for (int32_t s = 0; s < kSmearSamples; ++s) {
        const int32_t level = sums.high[s] + (sums.low[s] >> kLowBits);
        const int32_t fraction = level & ((1 << kFractionBits) - 1);
        fromLeast[s] = static_cast<uint32_t>(fraction - least);
        any |= fromLeast[s] > certain;
        out[s] = static_cast<uint8_t>(level >> kFractionBits);
    }
    if (any == 0) return false;
    for (int32_t s = 0; s < kSmearSamples; ++s) doubts[s] = fromLeast[s] > certain;
    return true;
}

KFX_AVX2 void SumInOrder(const OrderedTaps& taps, const uint8_t* const* samples, int32_t used,
                         const uint8_t* background, uint8_t* out) {
    constexpr int32_t kVectors = 6;  // that many sums of four samples stay in registers
    for (int32_t part = 0; part < kSmearSamples; part += 4 * kVectors) {
        const auto widened = [&](const uint8_t* bytes, int32_t v) KFX_AVX2 {
            const __m128i four = _mm_loadu_si32(bytes + part + 4 * v);
            return _mm256_cvtepi32_pd(_mm_cvtepu8_epi32(four));
        };
        __m256d sums[kVectors], levels[kVectors];
        const auto add = [&](int32_t i) KFX_AVX2 {
            const __m256d weight = _mm256_set1_pd(taps.weights[i]);
            for (int32_t v = 0; v < kVectors; ++v)
                sums[v] = _mm256_add_pd(sums[v], _mm256_mul_pd(weight, levels[v]));
        };
        for (__m256d& sum : sums) sum = _mm256_setzero_pd();
        int32_t i = 0;
        for (int32_t tap = 0; tap < used; ++tap) {
            const int32_t end = std::min(taps.before[tap + 1], taps.count);
            if (i >= end) break;
            for (int32_t v = 0; v < kVectors; ++v) levels[v] = widened(samples[tap], v);
            for (; i < end; ++i) add(i);
        }
        for (int32_t v = 0; v < kVectors; ++v) levels[v] = widened(background, v);
        for (; i < taps.count; ++i) add(i);
        int32_t truncated[4 * kVectors];
        for (int32_t v = 0; v < kVectors; ++v)
            _mm_storeu_si128(reinterpret_cast<__m128i*>(truncated + 4 * v), _mm256_cvttpd_epi32(sums[v]));
        for (int32_t s = 0; s < 4 * kVectors; ++s) out[part + s] = static_cast<uint8_t>(truncated[s]);
    }
}

KFX_AVX2 void RangeOfSamples(const uint8_t* const* samples, int32_t count, uint8_t* least,
                             uint8_t* greatest) {
    __m128i low[3], high[3];
    for (int v = 0; v < 3; ++v) low[v] = high[v] = LoadBytes(samples[0] + 16 * v);
    for (int32_t i = 1; i < count; ++i)
        for (int v = 0; v < 3; ++v) {
            const __m128i bytes = LoadBytes(samples[i] + 16 * v);
            low[v] = _mm_min_epu8(low[v], bytes);
            high[v] = _mm_max_epu8(high[v], bytes);
        }
    for (int v = 0; v < 3; ++v) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(least + 16 * v), low[v]);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(greatest + 16 * v), high[v]);
    }
}

#endif

}  // namespace kfx
