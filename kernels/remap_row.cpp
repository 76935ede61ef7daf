// SPDX-License-Identifier: MIT
#include "kernels/remap_row.h"

#include "kernels/vector_bytes.h"

namespace kfx {
namespace {

void RemapRowPlain(const uint8_t* from, int32_t width, ColorIndex* index, uint8_t* to) {
    for (int32_t x = 0; x < width; ++x, from += 3) to[x] = LookUpColor(index, from[2], from[1], from[0]);
}

#if KFX_HAS_AVX2

// Eight pixels as 0x00RRGGBB, from 24 bytes.
KFX_AVX2 KFX_INLINE __m256i ColorsOfEight(const uint8_t* from) {
    const __m128i first = LoadBytes(from);
    const __m128i last = LoadBytes(from + 8);
    return _mm256_shuffle_epi8(_mm256_set_m128i(last, first),
                               _mm256_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1,  //
                                                4, 5, 6, -1, 7, 8, 9, -1, 10, 11, 12, -1, 13, 14, 15, -1));
}

// The places of eight colours in the table of answers: a nibble's two digits are spread by a shuffle, the
// channels joined by multiplying them by 1, 4 and 16.
KFX_AVX2 KFX_INLINE __m256i PlacesOfEight(__m256i colors) {
    const __m256i nibble = _mm256_set1_epi8(15);
    const __m256i digits = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(0, 1, 2, 3, 64, 65, 66, 67, -128, -127, -126, -125, -64, -63, -62, -61));
    const __m256i weights = _mm256_set1_epi32(0x00100401);
    const __m256i ones = _mm256_set1_epi16(1);
    const __m256i low = _mm256_shuffle_epi8(digits, _mm256_and_si256(colors, nibble));
    const __m256i high = _mm256_shuffle_epi8(digits, _mm256_and_si256(_mm256_srli_epi16(colors, 4), nibble));
    const __m256i lowPlaces = _mm256_madd_epi16(_mm256_maddubs_epi16(low, weights), ones);
    const __m256i highPlaces = _mm256_madd_epi16(_mm256_maddubs_epi16(high, weights), ones);
    return _mm256_or_si256(lowPlaces, _mm256_slli_epi32(highPlaces, 12));
}

// Eight numbers below 256 as bytes.
KFX_AVX2 KFX_INLINE void StoreEight(__m256i numbers, uint8_t* to) {
    const __m128i words =
        _mm_packus_epi32(_mm256_castsi256_si128(numbers), _mm256_extracti128_si256(numbers, 1));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(to), _mm_packus_epi16(words, words));
}

KFX_AVX2 void RemapRowAvx2(const uint8_t* from, int32_t width, ColorIndex* index, uint8_t* to) {
    const auto* answers = reinterpret_cast<const int*>(index->tables->answers);
    const auto* known = reinterpret_cast<const int*>(index->tables->known);
    const __m256i byte = _mm256_set1_epi32(255);
    int32_t x = 0;
    for (; x + 8 <= width; x += 8) {
        const __m256i places = PlacesOfEight(ColorsOfEight(from + 3 * x));
        const __m256i asked = _mm256_i32gather_epi32(known, _mm256_srli_epi32(places, 6), 1);
        const __m256i unknown = _mm256_cmpeq_epi32(_mm256_and_si256(asked, byte), _mm256_setzero_si256());
        if (!_mm256_testz_si256(unknown, unknown)) {
            alignas(32) uint32_t each[8];
            _mm256_store_si256(reinterpret_cast<__m256i*>(each), places);
            for (const uint32_t place : each) AnswerAt(index, place);
        }
        // The processor reads in this order anyway; the compiler must, too. See color_index.h.
        std::atomic_signal_fence(std::memory_order_acquire);
        const __m256i found = _mm256_and_si256(_mm256_i32gather_epi32(answers, places, 1), byte);
        StoreEight(found, to + x);
    }
    RemapRowPlain(from + 3 * x, width - x, index, to + x);
}

KFX_AVX2 KFX_INLINE __m256i CellsOfEight(__m256i colors) {
    const auto part = [colors](int shift, int mask) KFX_AVX2 {
        return _mm256_and_si256(_mm256_srli_epi32(colors, shift), _mm256_set1_epi32(mask));
    };
    return _mm256_or_si256(_mm256_or_si256(part(9, 0x7C00), part(6, 0x03E0)), part(3, 0x001F));
}

// For fast remapping: CellAnswer() for each pixel.
KFX_AVX2 void RemapRowFastAvx2(const uint8_t* from, int32_t width, ColorIndex* index, uint8_t* to) {
    const auto* cells = reinterpret_cast<const int*>(index->tables->cells);
    const auto* palette = reinterpret_cast<const int*>(index->colors);
    const __m256i byte = _mm256_set1_epi32(255);
    const __m256i marks = _mm256_set1_epi32(kCellKnown | kCellShared);
    const __m256i usual = _mm256_set1_epi32(kCellKnown);
    int32_t x = 0;
    for (; x + 8 <= width; x += 8) {
        const __m256i colors = ColorsOfEight(from + 3 * x);
        const __m256i found = _mm256_i32gather_epi32(cells, CellsOfEight(colors), 4);
        const __m256i isUsual = _mm256_cmpeq_epi32(_mm256_and_si256(found, marks), usual);
        if (_mm256_movemask_epi8(isUsual) != -1) {
            RemapRowPlain(from + 3 * x, 8, index, to + x);
            continue;
        }
        const __m256i entries = _mm256_and_si256(_mm256_srli_epi32(found, 8), byte);
        const __m256i isEntry = _mm256_cmpeq_epi32(_mm256_i32gather_epi32(palette, entries, 4), colors);
        StoreEight(_mm256_blendv_epi8(_mm256_and_si256(found, byte), entries, isEntry), to + x);
    }
    RemapRowPlain(from + 3 * x, width - x, index, to + x);
}

#endif

}  // namespace

void RemapRow(const uint8_t* from, int32_t width, ColorIndex* index, uint8_t* to) {
#if KFX_HAS_AVX2
    if (UseAvx2()) return (index->fast ? RemapRowFastAvx2 : RemapRowAvx2)(from, width, index, to);
#endif
    RemapRowPlain(from, width, index, to);
}

}  // namespace kfx
