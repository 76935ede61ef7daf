// SPDX-License-Identifier: MIT
// Neon: each channel becomes the length of its gradient (vertical and horizontal differences of three
// neighbours each), so that edges glow on a dark ground.
#include "effects/neon.h"

#include <cmath>

#include "framework/cpu.h"
#include "kernels/neighbor_filter.h"
#if KFX_HAS_AVX2
#include <immintrin.h>
#endif
#include "resources/panel_controls.h"

namespace kfx {
namespace {

// The length is defined as sqrt(squares) / 1.8 in double precision, truncated. For each of the 1,170,451
// possible sums of squares this single-precision product truncates to the same byte, which a test goes
// through.
constexpr float kScale = 0.555555582f;

void NeonRow(const uint8_t* above, const uint8_t* centre, const uint8_t* below, size_t bytes, uint8_t* out) {
    for (size_t s = 0; s < bytes; ++s) {
        const int vertical = below[s] + below[s + 3] + below[s + 6] - above[s] - above[s + 3] - above[s + 6];
        const int horizontal = above[s + 6] + centre[s + 6] + below[s + 6] - above[s] - centre[s] - below[s];
        const float length =
            std::sqrt(static_cast<float>(horizontal * horizontal + vertical * vertical)) * kScale;
        out[s] = static_cast<uint8_t>(length > 255.0f ? 255 : static_cast<int>(length));
    }
}

#if KFX_HAS_AVX2

KFX_AVX2 inline __m256i Load(const uint8_t* bytes) {
    return _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes)));
}

// Eight lengths from pairs of 16-bit differences.
KFX_AVX2 inline __m256i Lengths(__m256i pairs) {
    const __m256 squares = _mm256_cvtepi32_ps(_mm256_madd_epi16(pairs, pairs));
    return _mm256_cvttps_epi32(_mm256_mul_ps(_mm256_sqrt_ps(squares), _mm256_set1_ps(kScale)));
}

KFX_AVX2 void NeonRowAvx2(const uint8_t* above, const uint8_t* centre, const uint8_t* below, size_t bytes,
                          uint8_t* out) {
    size_t s = 0;
    for (; s + 16 <= bytes; s += 16) {
        const __m256i upperLeft = Load(above + s), upperRight = Load(above + s + 6);
        const __m256i lowerLeft = Load(below + s), lowerRight = Load(below + s + 6);
        const __m256i fallingDiagonal = _mm256_sub_epi16(lowerRight, upperLeft);
        const __m256i risingDiagonal = _mm256_sub_epi16(upperRight, lowerLeft);
        const __m256i sides = _mm256_sub_epi16(Load(centre + s + 6), Load(centre + s));
        const __m256i middles = _mm256_sub_epi16(Load(below + s + 3), Load(above + s + 3));
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
    NeonRow(above + s, centre + s, below + s, bytes - s, out + s);
}

#endif

ImageHandle Kernel(ImageHandle source, const KernelInput&) { return ApplyNeon(source); }

constexpr uint32_t kControlIds[] = {0};

}  // namespace

ImageHandle ApplyNeon(ImageHandle source) {
#if KFX_HAS_AVX2
    if (UseAvx2()) return FilterNeighbors(source, NeonRowAvx2);
#endif
    return FilterNeighbors(source, NeonRow);
}

const EffectRecord kNeonEffect = {"Neon", IDD_PANEL_NEON, kControlIds, nullptr, 0, Kernel, nullptr};

}  // namespace kfx
