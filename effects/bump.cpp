// SPDX-License-Identifier: MIT
// Bump: raised relief, lit from the upper left, by a fixed 3 x 3 kernel whose weights sum to 1. Products of
// bytes with -1, 0 and 1 are whole numbers, so integers give what single precision would.
#include "effects/bump.h"

#include <algorithm>

#include "framework/cpu.h"
#include "kernels/neighbor_filter.h"
#if KFX_HAS_AVX2
#include <immintrin.h>
#endif
#include "resources/panel_controls.h"

namespace kfx {
namespace {

//   -1 -1  0
//   -1  1  1
//    0  1  1
void BumpRow(const uint8_t* above, const uint8_t* centre, const uint8_t* below, size_t bytes, uint8_t* out) {
    for (size_t s = 0; s < bytes; ++s) {
        const int lit = centre[s + 3] + centre[s + 6] + below[s + 3] + below[s + 6];
        const int shaded = above[s] + above[s + 3] + centre[s];
        out[s] = static_cast<uint8_t>(std::clamp(lit - shaded, 0, 255));
    }
}

#if KFX_HAS_AVX2

KFX_AVX2 inline __m256i Load(const uint8_t* bytes) {
    return _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes)));
}

KFX_AVX2 void BumpRowAvx2(const uint8_t* above, const uint8_t* centre, const uint8_t* below, size_t bytes,
                          uint8_t* out) {
    size_t s = 0;
    for (; s + 16 <= bytes; s += 16) {
        const __m256i lit = _mm256_add_epi16(_mm256_add_epi16(Load(centre + s + 3), Load(centre + s + 6)),
                                             _mm256_add_epi16(Load(below + s + 3), Load(below + s + 6)));
        const __m256i shaded =
            _mm256_add_epi16(_mm256_add_epi16(Load(above + s), Load(above + s + 3)), Load(centre + s));
        const __m256i relief = _mm256_sub_epi16(lit, shaded);
        // Packing saturates to 0 and 255.
        const __m128i result =
            _mm_packus_epi16(_mm256_castsi256_si128(relief), _mm256_extracti128_si256(relief, 1));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + s), result);
    }
    BumpRow(above + s, centre + s, below + s, bytes - s, out + s);
}

#endif

ImageHandle Kernel(ImageHandle source, const KernelInput&) { return ApplyBump(source); }

constexpr uint32_t kControlIds[] = {0};

}  // namespace

ImageHandle ApplyBump(ImageHandle source) {
#if KFX_HAS_AVX2
    if (UseAvx2()) return FilterNeighbors(source, BumpRowAvx2);
#endif
    return FilterNeighbors(source, BumpRow);
}

const EffectRecord kBumpEffect = {"Bump", IDD_PANEL_BUMP, kControlIds, nullptr, 0, Kernel, nullptr};

}  // namespace kfx
