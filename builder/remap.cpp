// SPDX-License-Identifier: MIT
#include "builder/remap.h"

#include <algorithm>

#include "builder/palette_order.h"
#include "framework/cpu.h"
#include "framework/memory_guards.h"

#if KFX_HAS_AVX2
#include <immintrin.h>
#endif

namespace kfx {
namespace {

constexpr int32_t kWhiteFrom = 129;  // luminance

uint32_t IsBright(int32_t red, int32_t green, int32_t blue) {
    return LuminanceOf(red, green, blue) >= kWhiteFrom;
}

// Full colour to indices. `kBytes` a source pixel: 3, or 4 with the last ignored.
template <int kBytes, int kBits>
void RemapColorRow(const uint8_t* from, int32_t width, ColorIndex* index, uint8_t* to) {
    for (int32_t x = 0; x < width; ++x, from += kBytes) {
        if constexpr (kBits == 1)
            PutIndex<1>(to, x, IsBright(from[2], from[1], from[0]));
        else
            PutIndex<kBits>(to, x, LookUpColor(index, from[2], from[1], from[0]));
    }
}

#if KFX_HAS_AVX2

// The places of eight pixels in the table of answers, from 24 bytes: a nibble's two digits are spread by a
// shuffle, the channels joined by multiplying them by 1, 4 and 16.
KFX_AVX2 KFX_INLINE __m256i PlacesOfEight(const uint8_t* from) {
    const __m128i first = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    const __m128i last = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + 8));
    const __m256i colors =
        _mm256_shuffle_epi8(_mm256_set_m128i(last, first),
                            _mm256_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1,  //
                                             4, 5, 6, -1, 7, 8, 9, -1, 10, 11, 12, -1, 13, 14, 15, -1));
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

KFX_AVX2 void RemapColorRowAvx2(const uint8_t* from, int32_t width, ColorIndex* index, uint8_t* to) {
    const auto* answers = reinterpret_cast<const int*>(index->tables->answers);
    const auto* known = reinterpret_cast<const int*>(index->tables->known);
    const __m256i byte = _mm256_set1_epi32(255);
    int32_t x = 0;
    for (; x + 8 <= width; x += 8) {
        const __m256i places = PlacesOfEight(from + 3 * x);
        const __m256i asked = _mm256_i32gather_epi32(known, _mm256_srli_epi32(places, 6), 1);
        const __m256i unknown = _mm256_cmpeq_epi32(_mm256_and_si256(asked, byte), _mm256_setzero_si256());
        if (!_mm256_testz_si256(unknown, unknown)) {
            alignas(32) uint32_t each[8];
            _mm256_store_si256(reinterpret_cast<__m256i*>(each), places);
            for (const uint32_t place : each) AnswerAt(index, place);
        }
        const __m256i found = _mm256_and_si256(_mm256_i32gather_epi32(answers, places, 1), byte);
        const __m128i words =
            _mm_packus_epi32(_mm256_castsi256_si128(found), _mm256_extracti128_si256(found, 1));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(to + x), _mm_packus_epi16(words, words));
    }
    RemapColorRow<3, 8>(from + 3 * x, width - x, index, to + x);
}

#endif

template <int kBytes>
void RemapColors(const WorkingImage* from, ColorIndex* index, WorkingImage* to) {
    auto remapRow = to->bitCount == 8   ? RemapColorRow<kBytes, 8>
                    : to->bitCount == 4 ? RemapColorRow<kBytes, 4>
                                        : RemapColorRow<kBytes, 1>;
#if KFX_HAS_AVX2
    if (kBytes == 3 && to->bitCount == 8 && UseAvx2()) remapRow = RemapColorRowAvx2;
#endif
    for (int32_t r = 0; r < from->height; ++r)
        remapRow(StoredRow(from, r), from->width, index, StoredRow(to, r));
}

// What the colour index answers for one level of gray: two look-ups are cheaper without the table.
uint8_t GrayEntry(const RemapTarget& target, int32_t searched, int32_t level) {
    const int32_t nearest = NearestEntry(target.palette, searched, level, level, level);
    const int32_t rounded = level & 0xF8;
    return static_cast<uint8_t>(target.fastRemap &&
                                        ColorDistance(target.palette + 3 * nearest, level, level, level) != 0
                                    ? NearestEntry(target.palette, searched, rounded, rounded, rounded)
                                    : nearest);
}

// What each index of a source with a colour table becomes; `searched` entries for a two-colour source.
void MapEntries(const WorkingImage* from, const RemapTarget& target, int32_t searched, uint8_t map[256]) {
    if (from->bitCount == 1) {
        // Two-colour pictures are black and white whatever their colour table says.
        map[0] = GrayEntry(target, searched, 0);
        map[1] = GrayEntry(target, searched, 255);
        return;
    }
    uint8_t colors[kPaletteBytes];
    ReadColorTable(from, colors);
    const int32_t entries = 1 << target.bitsPerPixel;
    for (int32_t i = 0; i < 1 << from->bitCount; ++i) {
        const uint8_t* color = colors + 3 * i;
        map[i] = static_cast<uint8_t>(
            target.bitsPerPixel == 1 ? static_cast<int32_t>(IsBright(color[0], color[1], color[2]))
                                     : NearestEntry(target.palette, entries, color[0], color[1], color[2]));
    }
}

template <int kBits>
void RemapIndexRow(const uint8_t* from, int32_t bitCount, int32_t width, const uint8_t map[256],
                   uint8_t* to) {
    for (int32_t x = 0; x < width; ++x) {
        const uint8_t value = GetIndex(from, bitCount, x);
        PutIndex<kBits>(to, x, map[value]);
    }
}

void RemapIndices(const WorkingImage* from, const uint8_t map[256], WorkingImage* to) {
    const auto remapRow = to->bitCount == 8   ? RemapIndexRow<8>
                          : to->bitCount == 4 ? RemapIndexRow<4>
                                              : RemapIndexRow<1>;
    for (int32_t r = 0; r < from->height; ++r)
        remapRow(StoredRow(from, r), from->bitCount, from->width, map, StoredRow(to, r));
}

// How many palette entries are searched for an image of that bit count: indices always fit its pixels.
int32_t SearchedEntries(const RemapTarget& target, int32_t imageBitCount) {
    return std::min(target.colorCount, 1 << imageBitCount);
}

}  // namespace

ColorIndex* IndexFor(RemapTarget* target, int32_t imageBitCount) {
    const int32_t searched = SearchedEntries(*target, imageBitCount);
    return PrepareColorIndex(&target->index, target->palette, searched, target->fastRemap) ? &target->index
                                                                                           : nullptr;
}

ImageHandle PlainRemap(ImageHandle source, RemapTarget* target) {
    const ImageLock from(source);
    if (!from) return nullptr;
    NewImage to(CreateDib(from->width, from->height, target->palette, target->bitsPerPixel));
    if (!to) return nullptr;
    if (from->bitCount <= 8) {
        uint8_t map[256];
        MapEntries(from.image, *target, SearchedEntries(*target, to->bitCount), map);
        RemapIndices(from.image, map, to.image);
        return to.Release();
    }

    // Two colours are told apart by luminance alone: no table of colours is asked.
    ColorIndex* index = to->bitCount == 1 ? nullptr : IndexFor(target, to->bitCount);
    if (!index && to->bitCount != 1) return nullptr;
    if (from->bitCount == 24)
        RemapColors<3>(from.image, index, to.image);
    else
        RemapColors<4>(from.image, index, to.image);
    return to.Release();
}

}  // namespace kfx
