// SPDX-License-Identifier: MIT
#include "kernels/equal_pixels.h"

#include <cstring>

#include "kernels/vector_bytes.h"

namespace kfx {
namespace {

// Sets the mask bits of a row's equal 24-bit pixels from column x on; the mask starts zeroed.
void MarkEqual(const uint8_t* a, const uint8_t* b, int32_t x, int32_t width, uint8_t* mask) {
    for (; x < width; ++x)
        if (std::memcmp(a + 3 * x, b + 3 * x, 3) == 0) mask[x >> 3] |= static_cast<uint8_t>(128 >> (x & 7));
}

#if KFX_HAS_AVX2

// Eight pixels, of 24 bytes, in the order of mask bits from the lowest up: the last pixel first.
KFX_AVX2 KFX_INLINE __m256i EightPixels(const uint8_t* from) {
    const __m128i first = LoadBytes(from);
    const __m128i last = LoadBytes(from + 8);
    return _mm256_shuffle_epi8(_mm256_set_m128i(first, last),
                               _mm256_setr_epi8(13, 14, 15, -1, 10, 11, 12, -1, 7, 8, 9, -1, 4, 5, 6, -1,  //
                                                9, 10, 11, -1, 6, 7, 8, -1, 3, 4, 5, -1, 0, 1, 2, -1));
}

KFX_AVX2 void MarkEqualAvx2(const uint8_t* a, const uint8_t* b, int32_t width, uint8_t* mask) {
    int32_t x = 0;
    for (; x + 8 <= width; x += 8) {
        const __m256i equal = _mm256_cmpeq_epi32(EightPixels(a + 3 * x), EightPixels(b + 3 * x));
        mask[x >> 3] = static_cast<uint8_t>(_mm256_movemask_ps(_mm256_castsi256_ps(equal)));
    }
    MarkEqual(a, b, x, width, mask);
}

#endif

}  // namespace

void MarkEqualPixels(const uint8_t* a, const uint8_t* b, int32_t width, uint8_t* mask) {
#if KFX_HAS_AVX2
    if (UseAvx2()) return MarkEqualAvx2(a, b, width, mask);
#endif
    MarkEqual(a, b, 0, width, mask);
}

}  // namespace kfx
