// SPDX-License-Identifier: MIT
#include "kernels/blur_estimate.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "kernels/vector_bytes.h"

#if KFX_HAS_AVX2

namespace kfx {
namespace {

constexpr int32_t kMostWeight = INT16_MAX;
constexpr int32_t kMostShift = 22;  // a sum with its addend is below 2^(shift + 9)

// The numbers that are multiplied: sums of the j-th samples from both ends, then the middle one. Where their
// count is odd the middle one is taken twice, each time with about half of its weight.
struct Factors {
    double weight[6];
    int32_t count;
};

Factors FactorsOf(const float* weights, int32_t n) {
    Factors factors = {};
    for (int32_t j = 0; j < n / 2; ++j)
        factors.weight[factors.count++] = (double{weights[j]} + weights[n - 1 - j]) / 2;
    const double middle = weights[n / 2];
    if (factors.count % 2 == 0) {
        factors.weight[factors.count++] = middle / 2;
        factors.weight[factors.count++] = middle / 2;
    } else {
        factors.weight[factors.count++] = middle;
    }
    return factors;
}

// Sixteen samples in the order of the taps.
KFX_AVX2 __m256i SumInOrder(const BlurEstimate& estimate, const uint16_t* const* rows, size_t s) {
    __m256 low = _mm256_setzero_ps(), high = low;
    for (int32_t j = 0; j < estimate.n; ++j) {
        const __m256 weight = _mm256_broadcast_ss(estimate.weights + j);
        const auto eight = [&](size_t first) KFX_AVX2 {
            const auto* words = reinterpret_cast<const __m128i*>(rows[j] + first);
            return _mm256_cvtepi32_ps(_mm256_cvtepu16_epi32(_mm_loadu_si128(words)));
        };
        low = _mm256_add_ps(low, _mm256_mul_ps(weight, eight(s)));
        high = _mm256_add_ps(high, _mm256_mul_ps(weight, eight(s + 8)));
    }
    const __m256 half = _mm256_set1_ps(kBlurHalf);
    const __m256i words = _mm256_packus_epi32(_mm256_cvttps_epi32(_mm256_add_ps(low, half)),
                                              _mm256_cvttps_epi32(_mm256_add_ps(high, half)));
    return _mm256_permute4x64_epi64(words, 0xD8);
}

// What all sixteens of a row share.
template <int kTaps>
struct Constants {
    __m256i pairs[(kTaps / 2 + 2) / 2];
    __m256i addend;
    __m256i fraction;
    __m256i doubt;
    __m128i shift;
};

template <int kTaps>
KFX_AVX2 inline Constants<kTaps> ConstantsOf(const BlurEstimate& estimate) {
    Constants<kTaps> constants;
    for (int k = 0; k < (kTaps / 2 + 2) / 2; ++k) constants.pairs[k] = _mm256_set1_epi32(estimate.pairs[k]);
    constants.addend = _mm256_set1_epi32(estimate.addend);
    constants.fraction = _mm256_set1_epi32((1 << estimate.shift) - 1);
    constants.doubt = _mm256_set1_epi32(estimate.doubt);
    constants.shift = _mm_cvtsi32_si128(estimate.shift);
    return constants;
}

// Sixteen rounded sums as words.
template <int kTaps>
KFX_AVX2 KFX_INLINE __m256i SixteenSums(const Constants<kTaps>& constants, const BlurEstimate& estimate,
                                        const uint16_t* const* rows, size_t s) {
    constexpr int kFolded = kTaps / 2;
    const auto samples = [rows, s](int j) KFX_AVX2 {
        return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(rows[j] + s));
    };
    // Factor k; those behind the last are the middle sample again.
    const auto factor = [&](int k) KFX_AVX2 {
        return k < kFolded ? _mm256_add_epi16(samples(k), samples(kTaps - 1 - k)) : samples(kFolded);
    };
    __m256i low = constants.addend, high = low;
    for (int k = 0; k <= kFolded; k += 2) {
        const __m256i a = factor(k), b = factor(k + 1);
        const __m256i pair = constants.pairs[k / 2];
        low = _mm256_add_epi32(low, _mm256_madd_epi16(_mm256_unpacklo_epi16(a, b), pair));
        high = _mm256_add_epi32(high, _mm256_madd_epi16(_mm256_unpackhi_epi16(a, b), pair));
    }
    const __m256i least = _mm256_min_epi32(_mm256_and_si256(low, constants.fraction),
                                           _mm256_and_si256(high, constants.fraction));
    if (_mm256_movemask_epi8(_mm256_cmpgt_epi32(constants.doubt, least)) != 0)
        return SumInOrder(estimate, rows, s);
    return _mm256_packus_epi32(_mm256_srl_epi32(low, constants.shift),
                               _mm256_srl_epi32(high, constants.shift));
}

template <int kTaps>
KFX_AVX2 void ToWords(const BlurEstimate& estimate, const uint16_t* const* rows, size_t count,
                      uint16_t* words) {
    // Copies: the compiler must assume that storing a result may change the caller's.
    const uint16_t* row[kTaps];
    std::copy_n(rows, kTaps, row);
    const Constants<kTaps> constants = ConstantsOf<kTaps>(estimate);
    for (size_t s = 0; s < count; s += 16)
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(words + s),
                            SixteenSums<kTaps>(constants, estimate, row, s));
}

template <int kTaps>
KFX_AVX2 void ToBytes(const BlurEstimate& estimate, const uint16_t* const* rows, size_t count,
                      uint8_t* bytes) {
    const uint16_t* row[kTaps];
    std::copy_n(rows, kTaps, row);
    const Constants<kTaps> constants = ConstantsOf<kTaps>(estimate);
    const auto thirtyTwo = [&](size_t s) KFX_AVX2 {
        const __m256i packed = _mm256_packus_epi16(SixteenSums<kTaps>(constants, estimate, row, s),
                                                   SixteenSums<kTaps>(constants, estimate, row, s + 16));
        return _mm256_permute4x64_epi64(packed, 0xD8);
    };
    size_t s = 0;
    for (; s + 32 <= count; s += 32) _mm256_storeu_si256(reinterpret_cast<__m256i*>(bytes + s), thirtyTwo(s));
    if (s == count) return;
    alignas(32) uint8_t last[32];
    _mm256_store_si256(reinterpret_cast<__m256i*>(last), thirtyTwo(s));
    std::memcpy(bytes + s, last, count - s);
}

}  // namespace

bool MakeBlurEstimate(const float* weights, int32_t n, BlurEstimate* estimate) {
    if (n != 5 && n != 7 && n != 9 && n != 11) return false;
    const Factors factors = FactorsOf(weights, n);
    const double greatest = *std::max_element(factors.weight, factors.weight + factors.count);
    int32_t shift = 0;
    while (shift < kMostShift && std::ldexp(greatest, shift + 1) < kMostWeight) ++shift;
    int32_t whole[6] = {};
    for (int32_t k = 0; k < factors.count; ++k)
        whole[k] = static_cast<int32_t>(std::lround(std::ldexp(factors.weight[k], shift)));
    // The middle one's second half makes up for what the first was rounded by.
    const int32_t folded = n / 2;
    const double middle = std::ldexp(double{weights[folded]}, shift);
    if (factors.count == folded + 2)
        whole[folded + 1] = static_cast<int32_t>(std::lround(middle)) - whole[folded];

    // By how much the exact sum may lie above and below the estimate, in its units. Each partial sum of the
    // sum in order, and the half added to it, is off by at most 2^-17 of a level, all products together by
    // 2^-16.
    double above = std::ldexp(n + 3, shift - 17), below = above;
    const auto allow = [&](double exact, int32_t estimated) {
        above += 255 * std::max(exact - estimated, 0.0);
        below += 255 * std::max(estimated - exact, 0.0);
    };
    for (int32_t j = 0; j < n; ++j) {
        const int32_t k = std::min(j, n - 1 - j);
        const bool isMiddle = k == folded;
        allow(isMiddle ? middle : std::ldexp(double{weights[j]}, shift),
              isMiddle && factors.count == folded + 2 ? whole[k] + whole[k + 1] : whole[k]);
    }
    estimate->weights = weights;
    estimate->n = n;
    estimate->shift = shift;
    for (int32_t k = 0; k < factors.count; k += 2)
        estimate->pairs[k / 2] = whole[k] | static_cast<int32_t>(static_cast<uint32_t>(whole[k + 1]) << 16);
    estimate->addend = (1 << (shift - 1)) + static_cast<int32_t>(above) + 1;
    estimate->doubt = static_cast<int32_t>(above + below) + 3;
    return true;
}

void BlurToWords(const BlurEstimate& estimate, const uint16_t* const* rows, size_t count, uint16_t* words) {
    const auto function = estimate.n == 5   ? ToWords<5>
                          : estimate.n == 7 ? ToWords<7>
                          : estimate.n == 9 ? ToWords<9>
                                            : ToWords<11>;
    function(estimate, rows, count, words);
}

void BlurToBytes(const BlurEstimate& estimate, const uint16_t* const* rows, size_t count, uint8_t* bytes) {
    const auto function = estimate.n == 5   ? ToBytes<5>
                          : estimate.n == 7 ? ToBytes<7>
                          : estimate.n == 9 ? ToBytes<9>
                                            : ToBytes<11>;
    function(estimate, rows, count, bytes);
}

}  // namespace kfx

#endif
