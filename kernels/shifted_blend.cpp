// SPDX-License-Identifier: MIT
#include "kernels/shifted_blend.h"

#include <algorithm>

#include "framework/cpu.h"
#include "kernels/vector_bytes.h"

namespace kfx {
namespace {

double Clamp(double value, double most) { return value < 0 ? 0 : value > most ? most : value; }

uint32_t BlendByte(uint32_t c00, uint32_t c10, uint32_t c01, uint32_t c11, float fx, float fy) {
    const auto f = [](uint32_t c) { return static_cast<float>(c & 255); };
    const float value = (f(c00) * (1 - fx) + f(c10) * fx) * (1 - fy) + (f(c01) * (1 - fx) + f(c11) * fx) * fy;
    return static_cast<uint32_t>(value) & 255;
}

// The pixel at a place that is moved to the border where it lies outside. All four bytes of a pixel value are
// blended, whatever they mean.
uint32_t BlendPixel(const WorkingImage* image, double x, double y) {
    const double insideX = Clamp(x, image->width - 1);
    const double insideY = Clamp(y, image->height - 1);
    const auto left = static_cast<int32_t>(insideX);
    const auto top = static_cast<int32_t>(insideY);
    const auto fx = static_cast<float>(insideX - left);
    const auto fy = static_cast<float>(insideY - top);
    const bool hasRight = left + 1 < image->width;
    const bool hasBottom = top + 1 < image->height;
    const uint32_t p00 = GetDibPixel(image, left, top);
    const uint32_t p10 = hasRight ? GetDibPixel(image, left + 1, top) : 0;
    const uint32_t p01 = hasBottom ? GetDibPixel(image, left, top + 1) : 0;
    const uint32_t p11 = hasRight && hasBottom ? GetDibPixel(image, left + 1, top + 1) : 0;
    uint32_t pixel = 0;
    for (int shift = 0; shift < 32; shift += 8)
        pixel |= BlendByte(p00 >> shift, p10 >> shift, p01 >> shift, p11 >> shift, fx, fy) << shift;
    return pixel;
}

// Blends pixels of a 24-bit picture with at least two columns and rows. A place in the last column is treated
// as a place in the column before it with a fraction of 1. This gives the same bytes, because the other
// column then has weight 0. Rows are treated in the same way. So every place has four pixels inside.
void BlendRun24(const WorkingImage* from, int32_t first, int32_t end, int32_t y, const double* shifts,
                uint8_t* out) {
    const uint8_t* origin = PictureRow(from, 0);
    const size_t stride = StrideOf(from);
    for (int32_t x = first; x < end; ++x, ++shifts, out += 3) {
        const double insideX = Clamp(x + *shifts, from->width - 1);
        const double insideY = Clamp(y + *shifts, from->height - 1);
        const int32_t left = std::min(static_cast<int32_t>(insideX), from->width - 2);
        const int32_t top = std::min(static_cast<int32_t>(insideY), from->height - 2);
        const auto fx = static_cast<float>(insideX - left);
        const auto fy = static_cast<float>(insideY - top);
        const uint8_t* above = origin + 3 * static_cast<size_t>(left) - static_cast<size_t>(top) * stride;
        const uint8_t* below = above - stride;
        for (int i = 0; i < 3; ++i)
            out[i] = static_cast<uint8_t>(BlendByte(above[i], above[i + 3], below[i], below[i + 3], fx, fy));
    }
}

// The columns from `first` up to `end`, whose shifts are `shifts`.
void BlendRun(const WorkingImage* from, int32_t first, int32_t end, int32_t y, const double* shifts,
              WorkingImage* to) {
    if (from->bitCount == 24 && from->width > 1 && from->height > 1) {
        BlendRun24(from, first, end, y, shifts, PictureRow(to, y) + 3 * static_cast<size_t>(first));
        return;
    }
    for (int32_t x = first; x < end; ++x, ++shifts)
        SetDibPixel(to, x, y, BlendPixel(from, x + *shifts, y + *shifts));
}

void FindShifts(const ShiftedRow& row, int32_t first, int32_t count, double* shifts) {
    for (int32_t i = 0; i < count; ++i) shifts[i] = row.values[row.distances[first + i]];
}

#if KFX_HAS_AVX2

// Four places, one in each lane.
struct InnerPlaces {
    __m128 fx;
    __m128 fy;
    __m128i offset;  // of the upper left neighbour, from the picture's top row
};

// Fills `places` and returns true if all four places can be blended with loads of 16 bytes. The picture's top
// row is the last one in memory, so loads must not reach beyond it. The last column and row are treated as
// above.
KFX_AVX2 inline bool FindInnerPlaces(__m256d x, __m256d y, const WorkingImage* image, InnerPlaces* places) {
    const __m256d zero = _mm256_setzero_pd();
    x = _mm256_min_pd(_mm256_max_pd(x, zero), _mm256_set1_pd(image->width - 1));
    y = _mm256_min_pd(_mm256_max_pd(y, zero), _mm256_set1_pd(image->height - 1));
    const __m256d column = _mm256_min_pd(_mm256_floor_pd(x), _mm256_set1_pd(image->width - 2));
    const __m256d row = _mm256_min_pd(_mm256_floor_pd(y), _mm256_set1_pd(image->height - 2));
    const __m256d beyond = _mm256_and_pd(_mm256_cmp_pd(column, _mm256_set1_pd(image->width - 6), _CMP_GT_OQ),
                                         _mm256_cmp_pd(row, zero, _CMP_EQ_OQ));
    if (_mm256_movemask_pd(beyond) != 0) return false;
    places->fx = _mm256_cvtpd_ps(_mm256_sub_pd(x, column));
    places->fy = _mm256_cvtpd_ps(_mm256_sub_pd(y, row));
    const __m128i columns = _mm256_cvttpd_epi32(column);
    const __m128i stride = _mm_set1_epi32(static_cast<int32_t>(StrideOf(image)));
    const __m128i bytes = _mm_add_epi32(columns, _mm_add_epi32(columns, columns));
    places->offset = _mm_sub_epi32(bytes, _mm_mullo_epi32(_mm256_cvttpd_epi32(row), stride));
    return true;
}

// Eight places that can be blended with loads of 16 bytes.
struct EightPlaces {
    __m256 fx;
    __m256 fy;
    const int32_t* offset;
};

// Eight places as they are kept from frame to frame.
struct KeptGroup {
    __m256 fraction;  // of columns and rows
    alignas(32) int32_t offset[8];
};
static_assert(sizeof(KeptGroup) == kGroupBytes && alignof(KeptGroup) == kGroupAlignment);

// The first offset of places that are not kept: some lie beside the picture, so that the fractions of columns
// and rows differ, or cannot be blended with loads of 16 bytes.
constexpr int32_t kNotKept = INT32_MIN;

// The neighbours of two places in a row, blended with the weights of their columns: each lane of 128 bits has
// the channels of a place.
KFX_AVX2 inline __m256 BlendColumns(const uint8_t* first, const uint8_t* second, __m256 gx, __m256 fx) {
    const __m256i left = _mm256_setr_epi8(0, -1, -1, -1, 1, -1, -1, -1, 2, -1, -1, -1, -1, -1, -1, -1,  //
                                          0, -1, -1, -1, 1, -1, -1, -1, 2, -1, -1, -1, -1, -1, -1, -1);
    const __m256i right = _mm256_setr_epi8(3, -1, -1, -1, 4, -1, -1, -1, 5, -1, -1, -1, -1, -1, -1, -1,  //
                                           3, -1, -1, -1, 4, -1, -1, -1, 5, -1, -1, -1, -1, -1, -1, -1);
    const __m256i neighbours = _mm256_set_m128i(LoadBytes(second), LoadBytes(first));
    const __m256 p0 = _mm256_cvtepi32_ps(_mm256_shuffle_epi8(neighbours, left));
    const __m256 p1 = _mm256_cvtepi32_ps(_mm256_shuffle_epi8(neighbours, right));
    return _mm256_add_ps(_mm256_mul_ps(p0, gx), _mm256_mul_ps(p1, fx));
}

// The truncated channels of places k and k + 4.
template <int k>
KFX_AVX2 inline __m256i BlendPair(const EightPlaces& places, const uint8_t* top, size_t stride) {
    const uint8_t* first = top + places.offset[k];
    const uint8_t* second = top + places.offset[k + 4];
    constexpr int kEach = k * 0x55;  // element k of each 128 bits to all four
    const __m256 one = _mm256_set1_ps(1);
    const __m256 fx = _mm256_permute_ps(places.fx, kEach);
    const __m256 fy = _mm256_permute_ps(places.fy, kEach);
    const __m256 gx = _mm256_sub_ps(one, fx);
    const __m256 above = BlendColumns(first, second, gx, fx);
    const __m256 below = BlendColumns(first - stride, second - stride, gx, fx);
    return _mm256_cvttps_epi32(
        _mm256_add_ps(_mm256_mul_ps(above, _mm256_sub_ps(one, fy)), _mm256_mul_ps(below, fy)));
}

KFX_AVX2 inline void PutEight(const EightPlaces& places, const WorkingImage* from, uint8_t* out) {
    const uint8_t* top = PictureRow(from, 0);
    const size_t stride = StrideOf(from);
    const __m256i pairs[] = {BlendPair<0>(places, top, stride), BlendPair<1>(places, top, stride),
                             BlendPair<2>(places, top, stride), BlendPair<3>(places, top, stride)};
    StorePairs(pairs, out);
}

// Eight pixels of row y from column x on, whose shifts are `shifts`. The places' offsets are left in `group`,
// and its fractions too, or it is marked as not kept.
KFX_AVX2 inline void BlendEight(const WorkingImage* from, int32_t x, int32_t y, const double* shifts,
                                KeptGroup* group, WorkingImage* to) {
    const __m256d column = _mm256_add_pd(_mm256_set1_pd(x), _mm256_setr_pd(0, 1, 2, 3));
    const __m256d backColumn = _mm256_add_pd(column, _mm256_set1_pd(4));
    const __m256d row = _mm256_set1_pd(y);
    const __m256d shift = _mm256_loadu_pd(shifts);
    const __m256d backShift = _mm256_loadu_pd(shifts + 4);
    InnerPlaces front, back;
    group->offset[0] = kNotKept;
    if (!FindInnerPlaces(_mm256_add_pd(column, shift), _mm256_add_pd(row, shift), from, &front) ||
        !FindInnerPlaces(_mm256_add_pd(backColumn, backShift), _mm256_add_pd(row, backShift), from, &back)) {
        BlendRun(from, x, x + 8, y, shifts, to);
        return;
    }
    _mm256_store_si256(reinterpret_cast<__m256i*>(group->offset),
                       _mm256_set_m128i(back.offset, front.offset));
    const EightPlaces places = {_mm256_set_m128(back.fx, front.fx), _mm256_set_m128(back.fy, front.fy),
                                group->offset};
    PutEight(places, from, PictureRow(to, y) + 3 * static_cast<size_t>(x));
    group->fraction = places.fx;
    if (_mm256_movemask_ps(_mm256_cmp_ps(places.fx, places.fy, _CMP_NEQ_UQ)) != 0)
        group->offset[0] = kNotKept;
}

KFX_AVX2 void BlendRowAvx2(const WorkingImage* from, int32_t y, const double* shifts, const KeptRow& kept,
                           WorkingImage* to) {
    auto* const groups = static_cast<KeptGroup*>(kept.groups);
    KeptGroup own;  // of rows that are not kept
    int32_t x = 0;
    for (; x + 8 <= from->width; x += 8)
        BlendEight(from, x, y, shifts + x, groups ? groups + x / 8 : &own, to);
    BlendRun(from, x, from->width, y, shifts + x, to);
    if (groups) *kept.filled = 1;
}

KFX_AVX2 void BlendKeptRowAvx2(const WorkingImage* from, int32_t y, const ShiftedRow& row,
                               const KeptGroup* groups, WorkingImage* to) {
    uint8_t* out = PictureRow(to, y);
    double shifts[8];
    KeptGroup own;
    int32_t x = 0;
    for (; x + 8 <= from->width; x += 8, out += 24) {
        const KeptGroup& group = groups[x / 8];
        if (group.offset[0] == kNotKept) {
            FindShifts(row, x, 8, shifts);
            BlendEight(from, x, y, shifts, &own, to);
        } else {
            PutEight({group.fraction, group.fraction, group.offset}, from, out);
        }
    }
    FindShifts(row, x, from->width - x, shifts);
    BlendRun(from, x, from->width, y, shifts, to);
}

#endif

}  // namespace

bool CanKeepPlaces(const WorkingImage* from) {
    return from->bitCount == 24 && from->width > 1 && from->height > 1;
}

void BlendShiftedRow(const WorkingImage* from, int32_t y, const ShiftedRow& row, double* shifts,
                     [[maybe_unused]] const KeptRow& kept, WorkingImage* to) {
#if KFX_HAS_AVX2
    const bool lanes = CanKeepPlaces(from) && UseAvx2();
    if (lanes && IsFilled(kept))
        return BlendKeptRowAvx2(from, y, row, static_cast<const KeptGroup*>(kept.groups), to);
#endif
    FindShifts(row, 0, from->width, shifts);
#if KFX_HAS_AVX2
    if (lanes) return BlendRowAvx2(from, y, shifts, kept, to);
#endif
    BlendRun(from, 0, from->width, y, shifts, to);
}

}  // namespace kfx
