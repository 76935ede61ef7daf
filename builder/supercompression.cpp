// SPDX-License-Identifier: MIT
#include "builder/supercompression.h"

#include <algorithm>
#include <cstring>

#include "framework/cpu.h"
#include "framework/memory_guards.h"

#if KFX_HAS_AVX2
#include <immintrin.h>
#endif

namespace kfx {
namespace {

// Sets the mask bits of a row's equal 24-bit pixels from column x on; the mask starts zeroed.
void MarkEqual(const uint8_t* shown, const uint8_t* row, int32_t x, int32_t width, uint8_t* mask) {
    for (; x < width; ++x)
        if (std::memcmp(shown + 3 * x, row + 3 * x, 3) == 0)
            mask[x >> 3] |= static_cast<uint8_t>(128 >> (x & 7));
}

#if KFX_HAS_AVX2

// Eight pixels, of 24 bytes, in the order of mask bits from the lowest up: the last pixel first.
KFX_AVX2 KFX_INLINE __m256i EightPixels(const uint8_t* from) {
    const __m128i first = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    const __m128i last = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + 8));
    return _mm256_shuffle_epi8(_mm256_set_m128i(first, last),
                               _mm256_setr_epi8(13, 14, 15, -1, 10, 11, 12, -1, 7, 8, 9, -1, 4, 5, 6, -1,  //
                                                9, 10, 11, -1, 6, 7, 8, -1, 3, 4, 5, -1, 0, 1, 2, -1));
}

KFX_AVX2 void MarkEqualAvx2(const uint8_t* shown, const uint8_t* row, int32_t width, uint8_t* mask) {
    int32_t x = 0;
    for (; x + 8 <= width; x += 8) {
        const __m256i equal = _mm256_cmpeq_epi32(EightPixels(shown + 3 * x), EightPixels(row + 3 * x));
        mask[x >> 3] = static_cast<uint8_t>(_mm256_movemask_ps(_mm256_castsi256_ps(equal)));
    }
    MarkEqual(shown, row, x, width, mask);
}

#endif

// One row of 24-bit pixels: mask bits first, then the copy, which changes nothing where they are equal.
void CompareRow(uint8_t* shown, const uint8_t* row, int32_t width, uint8_t* mask) {
#if KFX_HAS_AVX2
    if (UseAvx2())
        MarkEqualAvx2(shown, row, width, mask);
    else
#endif
        MarkEqual(shown, row, 0, width, mask);
    std::memcpy(shown, row, 3 * static_cast<size_t>(width));
}

void Compare24Bits(WorkingImage* composite, const WorkingImage* frame, WorkingImage* mask) {
    const int32_t width = std::min(composite->width, frame->width);
    for (int32_t y = 0; y < composite->height; ++y) {
        uint8_t* shown = PictureRow(composite, y);
        const int32_t covered = y < frame->height ? width : 0;
        if (covered) CompareRow(shown, PictureRow(frame, y), covered, PictureRow(mask, y));
        // Reading outside a frame answers -1, which no pixel equals and which is white when written.
        std::memset(shown + 3 * covered, 0xFF, 3 * static_cast<size_t>(composite->width - covered));
    }
}

void CompareAnyDepth(WorkingImage* composite, const WorkingImage* frame, WorkingImage* mask) {
    for (int32_t y = 0; y < composite->height; ++y) {
        for (int32_t x = 0; x < composite->width; ++x) {
            const uint32_t pixel = GetDibPixel(frame, x, y);
            const bool same = GetDibPixel(composite, x, y) == pixel;
            if (!same) SetDibPixel(composite, x, y, pixel);
            SetDibPixel(mask, x, y, same);
        }
    }
}

}  // namespace

ImageHandle UpdateComposite(ImageHandle composite, ImageHandle frame) {
    constexpr uint8_t kBlackAndWhite[] = {0, 0, 0, 255, 255, 255};
    const ImageLock shown(composite);
    const ImageLock next(frame);
    if (!shown || !next) return nullptr;
    NewImage mask(CreateDib(shown->width, shown->height, kBlackAndWhite, 1));
    if (!mask) return nullptr;
    if (shown->bitCount == 24 && next->bitCount == 24)
        Compare24Bits(shown.image, next.image, mask.image);
    else
        CompareAnyDepth(shown.image, next.image, mask.image);
    return mask.Release();
}

}  // namespace kfx
