// SPDX-License-Identifier: MIT
#include "kernels/neighbor_rows.h"

#include <algorithm>
#include <cmath>

#include "framework/cpu.h"
#include "kernels/vector_bytes.h"

namespace kfx {
namespace {

void ReliefRowPlain(const uint8_t* above, const uint8_t* centre, const uint8_t* below, size_t bytes,
                    uint8_t* out) {
    for (size_t s = 0; s < bytes; ++s) {
        const int lit = centre[s + 3] + centre[s + 6] + below[s + 3] + below[s + 6];
        const int shaded = above[s] + above[s + 3] + centre[s];
        out[s] = static_cast<uint8_t>(std::clamp(lit - shaded, 0, 255));
    }
}

// The length is defined as sqrt(squares) / 1.8 in double precision, truncated. For each of the 1,170,451
// possible sums of squares this single-precision product truncates to the same byte; a test compares them
// all.
constexpr float kScale = 0.555555582f;

void GradientRowPlain(const uint8_t* above, const uint8_t* centre, const uint8_t* below, size_t bytes,
                      uint8_t* out) {
    for (size_t s = 0; s < bytes; ++s) {
        const int vertical = below[s] + below[s + 3] + below[s + 6] - above[s] - above[s + 3] - above[s + 6];
        const int horizontal = above[s + 6] + centre[s + 6] + below[s + 6] - above[s] - centre[s] - below[s];
        const float length =
            std::sqrt(static_cast<float>(horizontal * horizontal + vertical * vertical)) * kScale;
        out[s] = static_cast<uint8_t>(length > 255.0f ? 255 : static_cast<int>(length));
    }
}

#if KFX_HAS_AVX2

KFX_AVX2 void ReliefRowAvx2(const uint8_t* above, const uint8_t* centre, const uint8_t* below, size_t bytes,
                            uint8_t* out) {
    size_t s = 0;
    for (; s + 16 <= bytes; s += 16) {
        const __m256i lit =
            _mm256_add_epi16(_mm256_add_epi16(LoadWidened(centre + s + 3), LoadWidened(centre + s + 6)),
                             _mm256_add_epi16(LoadWidened(below + s + 3), LoadWidened(below + s + 6)));
        const __m256i shaded = _mm256_add_epi16(
            _mm256_add_epi16(LoadWidened(above + s), LoadWidened(above + s + 3)), LoadWidened(centre + s));
        const __m256i relief = _mm256_sub_epi16(lit, shaded);
        // Packing saturates to 0 and 255.
        const __m128i result =
            _mm_packus_epi16(_mm256_castsi256_si128(relief), _mm256_extracti128_si256(relief, 1));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + s), result);
    }
    ReliefRowPlain(above + s, centre + s, below + s, bytes - s, out + s);
}

// Eight lengths from pairs of 16-bit differences.
KFX_AVX2 inline __m256i Lengths(__m256i pairs) {
    const __m256 squares = _mm256_cvtepi32_ps(_mm256_madd_epi16(pairs, pairs));
    return _mm256_cvttps_epi32(_mm256_mul_ps(_mm256_sqrt_ps(squares), _mm256_set1_ps(kScale)));
}

KFX_AVX2 void GradientRowAvx2(const uint8_t* above, const uint8_t* centre, const uint8_t* below, size_t bytes,
                              uint8_t* out) {
    size_t s = 0;
    for (; s + 16 <= bytes; s += 16) {
        const __m256i upperLeft = LoadWidened(above + s), upperRight = LoadWidened(above + s + 6);
        const __m256i lowerLeft = LoadWidened(below + s), lowerRight = LoadWidened(below + s + 6);
        const __m256i fallingDiagonal = _mm256_sub_epi16(lowerRight, upperLeft);
        const __m256i risingDiagonal = _mm256_sub_epi16(upperRight, lowerLeft);
        const __m256i sides = _mm256_sub_epi16(LoadWidened(centre + s + 6), LoadWidened(centre + s));
        const __m256i middles = _mm256_sub_epi16(LoadWidened(below + s + 3), LoadWidened(above + s + 3));
        const __m256i horizontal = _mm256_add_epi16(_mm256_add_epi16(fallingDiagonal, risingDiagonal), sides);
        const __m256i vertical = _mm256_add_epi16(_mm256_sub_epi16(fallingDiagonal, risingDiagonal), middles);
        const __m256i low = Lengths(_mm256_unpacklo_epi16(horizontal, vertical));
        const __m256i high = Lengths(_mm256_unpackhi_epi16(horizontal, vertical));
        // Packing saturates, and restores the order that unpacking changed.
        const __m256i words = _mm256_packus_epi32(low, high);
        const __m128i result =
            _mm_packus_epi16(_mm256_castsi256_si128(words), _mm256_extracti128_si256(words, 1));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + s), result);
    }
    GradientRowPlain(above + s, centre + s, below + s, bytes - s, out + s);
}

#endif

}  // namespace

NeighborRowFilter ReliefRow() {
#if KFX_HAS_AVX2
    if (UseAvx2()) return ReliefRowAvx2;
#endif
    return ReliefRowPlain;
}

NeighborRowFilter GradientRow() {
#if KFX_HAS_AVX2
    if (UseAvx2()) return GradientRowAvx2;
#endif
    return GradientRowPlain;
}

}  // namespace kfx
