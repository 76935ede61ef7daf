// SPDX-License-Identifier: MIT
// Eight points between pixels at a time, estimated with AVX2: where they lie, what is kept of them, and their
// colours. For bilinear_sampler.cpp, which settles what an estimate leaves in doubt.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "framework/cpu.h"
#include "framework/working_image.h"
#include "kernels/bilinear_sampler.h"
#include "kernels/kept_points.h"
#include "kernels/vector_bytes.h"

#if KFX_HAS_AVX2

namespace kfx {

// Estimates are whole numbers of 2^-15 of a level.
constexpr int kFractionBits = 15;
constexpr int32_t kLevel = 1 << kFractionBits;
constexpr int32_t kHalfLevel = kLevel / 2;

// No estimate is farther from the exact value than this. The weights of columns are rounded to whole 2^-15,
// so that they are off by 2^-16 and a level by at most 255 times as much, 127.5 units. Those of rows, as they
// are kept, are off by 2^-18, 31.9 units more. Each coordinate is off by kPlaceError, 7.5 units. Single
// precision adds less than two.
constexpr int32_t kDoubt = 177;
static_assert(127.5 + 31.9 + 2 * 255 * kPlaceError * kLevel + 2 < kDoubt);

// How far inner points are from a whole row at least; from whole columns they are as far.
constexpr float kRowMargin = 1.0F / 65536;
static_assert(kRowMargin > kPlaceError);

// Eight points whose neighbours all lie inside, and with them the 16 bytes from the left neighbour on.
struct InnerPoints {
    __m256i columnWeights;  // of the left neighbour in the low, of the right one in the high word
    __m256 fy;
    const int32_t* offset;  // of the upper left neighbour, from the picture's top row
};

// Eight points as they are kept from frame to frame. A fraction has kRowBits bits of `fy`, rounded down, and
// above them the weight of the right neighbour.
struct KeptInnerPoints {
    __m256i fractions;
    alignas(32) int32_t offset[8];
};
static_assert(sizeof(KeptInnerPoints) == kGroupBytes && alignof(KeptInnerPoints) == kGroupAlignment);
constexpr int kRowBits = 32 - kFractionBits;
constexpr int32_t kRowUnits = 1 << kRowBits;

// The first offset of kept points that are not all inner ones.
constexpr int32_t kNotInner = INT32_MIN;

KFX_AVX2 inline void Keep(const InnerPoints& points, KeptInnerPoints* kept) {
    const __m256i rows = _mm256_cvttps_epi32(_mm256_mul_ps(points.fy, _mm256_set1_ps(kRowUnits)));
    const __m256i columns = _mm256_srli_epi32(points.columnWeights, 16);
    kept->fractions = _mm256_or_si256(_mm256_slli_epi32(columns, kRowBits), rows);
}

KFX_AVX2 inline InnerPoints Kept(const KeptInnerPoints& kept) {
    const __m256i fraction = _mm256_srli_epi32(kept.fractions, kRowBits);
    const __m256i left = _mm256_sub_epi32(_mm256_set1_epi32(kLevel), fraction);
    const __m256 rows =
        _mm256_cvtepi32_ps(_mm256_and_si256(kept.fractions, _mm256_set1_epi32(kRowUnits - 1)));
    InnerPoints points;
    points.columnWeights = _mm256_or_si256(left, _mm256_slli_epi32(fraction, 16));
    points.fy = _mm256_mul_ps(_mm256_add_ps(rows, _mm256_set1_ps(0.5F)), _mm256_set1_ps(1.0F / kRowUnits));
    points.offset = kept.offset;
    return points;
}

// The first column and row that lie too far for FindInnerPoints, and the picture's stride.
struct InnerArea {
    __m256i endColumn;  // in units of 2^-15
    __m256i endRow;
    __m256i stride;
};

KFX_AVX2 inline InnerArea MakeInnerArea(const WorkingImage* image) {
    const int32_t columns = std::clamp(image->width - 5, 0, 65535);
    return {_mm256_set1_epi32(columns << kFractionBits), _mm256_set1_epi32(image->height - 1),
            _mm256_set1_epi32(static_cast<int32_t>(StrideOf(image)))};
}

// Columns of four points in units of 2^-15, rounded. What is no number or too large becomes the least
// integer.
KFX_AVX2 inline __m128i ScaledColumns(const double* x) {
    const __m256d scaled = _mm256_mul_pd(_mm256_loadu_pd(x), _mm256_set1_pd(kLevel));
    return _mm256_cvtpd_epi32(_mm256_add_pd(scaled, _mm256_set1_pd(kHalfLevel)));
}

// The row of four points, and how far below it they lie. What is no number or too large becomes the least
// integer.
KFX_AVX2 inline __m128i RowsOf(const double* y, __m128* fy) {
    const __m256d upper = _mm256_add_pd(_mm256_loadu_pd(y), _mm256_set1_pd(0.5));
    const __m256d row = _mm256_floor_pd(upper);
    *fy = _mm256_cvtpd_ps(_mm256_sub_pd(upper, row));
    return _mm256_cvttpd_epi32(row);
}

// Fills `points` and `offset` and returns true if all eight points are inner ones. Left out are also those
// next to a whole column or row: the exact point may lie on its other side, a weight of one, 2^15, does not
// fit in a signed word, and adding 1 to a coordinate may round up to the pixel after the next one.
KFX_AVX2 inline bool FindInnerPoints(const double* x, const double* y, const InnerArea& area, int32_t* offset,
                                     InnerPoints* points) {
    const __m256i scaled = _mm256_set_m128i(ScaledColumns(x + 4), ScaledColumns(x));
    __m128 frontFy, backFy;
    const __m128i frontRows = RowsOf(y, &frontFy);
    const __m256i rows = _mm256_set_m128i(RowsOf(y + 4, &backFy), frontRows);
    points->fy = _mm256_set_m128(backFy, frontFy);
    const __m256i fraction = _mm256_and_si256(scaled, _mm256_set1_epi32(kLevel - 1));
    const __m256i zero = _mm256_setzero_si256();
    __m256i inside =
        _mm256_and_si256(_mm256_cmpgt_epi32(scaled, zero), _mm256_cmpgt_epi32(area.endColumn, scaled));
    inside = _mm256_and_si256(inside, _mm256_cmpgt_epi32(fraction, zero));
    inside = _mm256_and_si256(inside, _mm256_cmpgt_epi32(rows, _mm256_set1_epi32(-1)));
    inside = _mm256_and_si256(inside, _mm256_cmpgt_epi32(area.endRow, rows));
    const __m256 fromMiddle =
        _mm256_andnot_ps(_mm256_set1_ps(-0.0F), _mm256_sub_ps(points->fy, _mm256_set1_ps(0.5F)));
    const __m256 between = _mm256_cmp_ps(fromMiddle, _mm256_set1_ps(0.5F - kRowMargin), _CMP_LT_OQ);
    if (_mm256_movemask_ps(_mm256_and_ps(_mm256_castsi256_ps(inside), between)) != 255) return false;
    const __m256i left = _mm256_sub_epi32(_mm256_set1_epi32(kLevel), fraction);
    points->columnWeights = _mm256_or_si256(left, _mm256_slli_epi32(fraction, 16));
    const __m256i columns = _mm256_srli_epi32(scaled, kFractionBits);
    const __m256i bytes = _mm256_add_epi32(columns, _mm256_add_epi32(columns, columns));
    _mm256_store_si256(reinterpret_cast<__m256i*>(offset),
                       _mm256_sub_epi32(bytes, _mm256_mullo_epi32(rows, area.stride)));
    points->offset = offset;
    return true;
}

// The neighbours of two points in a row, blended with the weights of their columns: each lane of 128 bits has
// the channels of a point.
KFX_AVX2 inline __m256 BlendColumns(const uint8_t* first, const uint8_t* second, __m256i weights) {
    const __m256i channelPairs =
        _mm256_setr_epi8(0, -1, 3, -1, 1, -1, 4, -1, 2, -1, 5, -1, -1, -1, -1, -1,  //
                         0, -1, 3, -1, 1, -1, 4, -1, 2, -1, 5, -1, -1, -1, -1, -1);
    const __m256i neighbours = _mm256_set_m128i(LoadBytes(second), LoadBytes(first));
    return _mm256_cvtepi32_ps(_mm256_madd_epi16(_mm256_shuffle_epi8(neighbours, channelPairs), weights));
}

// Estimates of points k and k + 4, with a half for rounding and the doubt added.
template <int k>
KFX_AVX2 inline __m256i EstimatePair(const InnerPoints& points, const uint8_t* top, size_t stride) {
    const uint8_t* first = top + points.offset[k];
    const uint8_t* second = top + points.offset[k + 4];
    constexpr int kEach = k * 0x55;  // element k of each 128 bits to all four
    const __m256i weights = _mm256_shuffle_epi32(points.columnWeights, kEach);
    const __m256 fy = _mm256_permute_ps(points.fy, kEach);
    const __m256 above = BlendColumns(first, second, weights);
    const __m256 below = BlendColumns(first - stride, second - stride, weights);
    const __m256 value = _mm256_add_ps(above, _mm256_mul_ps(_mm256_sub_ps(below, above), fy));
    return _mm256_cvtps_epi32(_mm256_add_ps(value, _mm256_set1_ps(kHalfLevel + kDoubt)));
}

// Four bits for each of eight points in order, one for each channel whose estimate is so near a rounding
// boundary that the exact value may lie on its other side.
KFX_AVX2 inline uint32_t DoubtfulChannels(const __m256i* pairs) {
    __m256i doubtful[4];
    for (int k = 0; k < 4; ++k) {
        const __m256i fraction = _mm256_and_si256(pairs[k], _mm256_set1_epi32(kLevel - 1));
        doubtful[k] = _mm256_cmpgt_epi32(_mm256_set1_epi32(2 * kDoubt), fraction);
    }
    const __m256i bytes = _mm256_packs_epi16(_mm256_packs_epi32(doubtful[0], doubtful[1]),
                                             _mm256_packs_epi32(doubtful[2], doubtful[3]));
    return static_cast<uint32_t>(_mm256_movemask_epi8(bytes));
}

// Writes the estimates of eight points. Returns DoubtfulChannels().
KFX_AVX2 inline uint32_t PutEstimates(const InnerPoints& points, const uint8_t* top, size_t stride,
                                      uint8_t* out) {
    const __m256i pairs[] = {EstimatePair<0>(points, top, stride), EstimatePair<1>(points, top, stride),
                             EstimatePair<2>(points, top, stride), EstimatePair<3>(points, top, stride)};
    __m256i levels[4];
    for (int k = 0; k < 4; ++k) levels[k] = _mm256_srli_epi32(pairs[k], kFractionBits);
    StorePairs(levels, out);
    return DoubtfulChannels(pairs);
}

}  // namespace kfx
#endif
