// SPDX-License-Identifier: MIT
// How the scaler's passes round their sums to bytes.
#pragma once

#include <algorithm>
#include <cstdint>

#include "framework/cpu.h"

#if KFX_HAS_AVX2
#include <immintrin.h>
#endif

namespace kfx {

// Halves up, from 0 to 255.
KFX_INLINE uint8_t RoundToByte(float value) {
    const float rounded = value + 0.5f;
    return static_cast<uint8_t>(static_cast<int32_t>(std::min(std::max(rounded, 0.0f), 255.0f)));
}

#if KFX_HAS_AVX2

// Sixteen sums, rounded, as words that become bytes by saturation. The greatest sum has to be cut off before:
// one beyond the greatest integer would become the least one.
KFX_AVX2 inline __m256i RoundedWords(__m256 a, __m256 b) {
    const __m256 half = _mm256_set1_ps(0.5f), most = _mm256_set1_ps(255);
    return _mm256_packs_epi32(_mm256_cvttps_epi32(_mm256_min_ps(_mm256_add_ps(a, half), most)),
                              _mm256_cvttps_epi32(_mm256_min_ps(_mm256_add_ps(b, half), most)));
}

// Rounds four times eight sums to bytes from 0 to 255.
KFX_AVX2 inline void StoreRoundedBytes(const __m256* sums, uint8_t* bytes) {
    const __m256i packed =
        _mm256_packus_epi16(RoundedWords(sums[0], sums[1]), RoundedWords(sums[2], sums[3]));
    const __m256i inOrder = _mm256_permutevar8x32_epi32(packed, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(bytes), inOrder);
}

#endif

}  // namespace kfx
