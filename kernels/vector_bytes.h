// SPDX-License-Identifier: MIT
// Loads and stores of pixel bytes that several AVX2 kernels share.
#pragma once

#include <cstdint>

#include "framework/cpu.h"

#if KFX_HAS_AVX2
#include <immintrin.h>

namespace kfx {

KFX_AVX2 inline __m128i LoadBytes(const uint8_t* bytes) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
}

// Sixteen bytes, each widened to 16 bits.
KFX_AVX2 inline __m256i LoadWidened(const uint8_t* bytes) { return _mm256_cvtepu8_epi16(LoadBytes(bytes)); }

// Writes four 32-bit pixels as twelve bytes of 24-bit pixels: every fourth byte is left out.
KFX_AVX2 inline void StoreFourPixels(__m128i pixels, uint8_t* out) {
    const __m128i leaveOutFourth = _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
    const __m128i packed = _mm_shuffle_epi8(pixels, leaveOutFourth);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out), packed);
    _mm_storeu_si32(out + 8, _mm_srli_si128(packed, 8));
}

// Writes eight 24-bit pixels. Pair k of four has the channels, 0 to 255 each, of pixel k in its lower and of
// pixel k + 4 in its upper half.
KFX_AVX2 inline void StorePairs(const __m256i* pairs, uint8_t* out) {
    const __m256i bytes =
        _mm256_packus_epi16(_mm256_packs_epi32(pairs[0], pairs[1]), _mm256_packs_epi32(pairs[2], pairs[3]));
    StoreFourPixels(_mm256_castsi256_si128(bytes), out);
    StoreFourPixels(_mm256_extracti128_si256(bytes, 1), out + 12);
}

}  // namespace kfx
#endif
