// SPDX-License-Identifier: MIT
#include "kernels/channel_order.h"

#include <cstddef>

#include "framework/cpu.h"
#include "kernels/vector_bytes.h"

namespace kfx {
namespace {

// Puts each pixel's channels into the pattern's order. `inversion` 255 inverts all channels, 0 none.
void ArrangePixels(const uint8_t* from, size_t count, uint8_t inversion, const uint8_t pattern[3],
                   uint8_t* to) {
    for (size_t x = 0; x < count; ++x, from += 3, to += 3)
        for (int i = 0; i < 3; ++i) to[i] = static_cast<uint8_t>(from[pattern[i]] ^ inversion);
}

#if KFX_HAS_AVX2

// The same for five pixels at a time, as long as no load reads beyond the row. Returns how many pixels were
// written. The sixteenth byte of each store is overwritten by the next store.
KFX_AVX2 size_t ArrangePixelsAvx2(const uint8_t* from, size_t count, uint8_t inversion,
                                  const uint8_t pattern[3], uint8_t* to) {
    alignas(16) uint8_t picks[16] = {};
    for (uint8_t i = 0; i < 15; ++i) picks[i] = static_cast<uint8_t>(i - i % 3 + pattern[i % 3]);
    const __m128i pick = _mm_load_si128(reinterpret_cast<const __m128i*>(picks));
    const __m128i flip = _mm_set1_epi8(static_cast<char>(inversion));
    size_t x = 0;
    for (; x + 6 <= count; x += 5, from += 15, to += 15) {
        const __m128i pixels = LoadBytes(from);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm_xor_si128(_mm_shuffle_epi8(pixels, pick), flip));
    }
    return x;
}

#endif

}  // namespace

void ArrangeRow(const uint8_t* from, int32_t width, bool invert, const uint8_t pattern[3], uint8_t* to) {
    const auto count = static_cast<size_t>(width);
    const uint8_t inversion = invert ? 255 : 0;
    size_t done = 0;
#if KFX_HAS_AVX2
    if (UseAvx2()) done = ArrangePixelsAvx2(from, count, inversion, pattern, to);
#endif
    ArrangePixels(from + 3 * done, count - done, inversion, pattern, to + 3 * done);
}

}  // namespace kfx
