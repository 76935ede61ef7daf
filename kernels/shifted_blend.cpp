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
    for (int32_t x = first; x < end; ++x, out += 3) {
        const double insideX = Clamp(x + shifts[x], from->width - 1);
        const double insideY = Clamp(y + shifts[x], from->height - 1);
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

void BlendRun(const WorkingImage* from, int32_t first, int32_t end, int32_t y, const double* shifts,
              WorkingImage* to) {
    if (from->bitCount == 24 && from->width > 1 && from->height > 1) {
        BlendRun24(from, first, end, y, shifts, PictureRow(to, y) + 3 * static_cast<size_t>(first));
        return;
    }
    for (int32_t x = first; x < end; ++x)
        SetDibPixel(to, x, y, BlendPixel(from, x + shifts[x], y + shifts[x]));
}

#if KFX_HAS_AVX2

// Four places, one in each lane.
struct InnerPlaces {
    alignas(16) float fx[4];
    alignas(16) float fy[4];
    alignas(16) int32_t offset[4];  // of the upper left neighbour, from the picture's top row
};

// The two pixels at `pixels`, side by side in the halves of a register.
KFX_AVX2 inline __m256 LoadPair(const uint8_t* pixels) {
    const __m128i spread = _mm_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, -1, -1, -1, -1, -1, -1, -1, -1);
    const __m128i bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(pixels));
    return _mm256_cvtepi32_ps(_mm256_cvtepu8_epi32(_mm_shuffle_epi8(bytes, spread)));
}

KFX_AVX2 inline __m128 AddHalves(__m256 pair) {
    return _mm_add_ps(_mm256_castps256_ps128(pair), _mm256_extractf128_ps(pair, 1));
}

// The truncated channels of place i in 32-bit lanes.
KFX_AVX2 inline __m128i BlendPlace(const InnerPlaces& places, int i, const uint8_t* top, size_t stride) {
    const uint8_t* upper = top + places.offset[i];
    const __m128 one = _mm_set1_ps(1);
    const __m128 fx = _mm_broadcast_ss(&places.fx[i]);
    const __m128 fy = _mm_broadcast_ss(&places.fy[i]);
    const __m256 weights = _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_sub_ps(one, fx)), fx, 1);
    const __m128 above = AddHalves(_mm256_mul_ps(LoadPair(upper), weights));
    const __m128 below = AddHalves(_mm256_mul_ps(LoadPair(upper - stride), weights));
    return _mm_cvttps_epi32(_mm_add_ps(_mm_mul_ps(above, _mm_sub_ps(one, fy)), _mm_mul_ps(below, fy)));
}

// Fills `places` and returns true if all four places can be blended with loads of 8 bytes. The picture's top
// row is the last one in memory, so loads must not reach beyond it. The last column and row are treated as
// above.
KFX_AVX2 inline bool FindInnerPlaces(__m256d x, __m256d y, const WorkingImage* image, InnerPlaces* places) {
    const __m256d zero = _mm256_setzero_pd();
    const __m256d beforeLastColumn = _mm256_set1_pd(image->width - 2);
    x = _mm256_min_pd(_mm256_max_pd(x, zero), _mm256_set1_pd(image->width - 1));
    y = _mm256_min_pd(_mm256_max_pd(y, zero), _mm256_set1_pd(image->height - 1));
    const __m256d column = _mm256_min_pd(_mm256_floor_pd(x), beforeLastColumn);
    const __m256d row = _mm256_min_pd(_mm256_floor_pd(y), _mm256_set1_pd(image->height - 2));
    const __m256d beyond = _mm256_and_pd(_mm256_cmp_pd(column, beforeLastColumn, _CMP_EQ_OQ),
                                         _mm256_cmp_pd(row, zero, _CMP_EQ_OQ));
    if (_mm256_movemask_pd(beyond) != 0) return false;
    _mm_store_ps(places->fx, _mm256_cvtpd_ps(_mm256_sub_pd(x, column)));
    _mm_store_ps(places->fy, _mm256_cvtpd_ps(_mm256_sub_pd(y, row)));
    const __m128i columns = _mm256_cvttpd_epi32(column);
    const __m128i stride = _mm_set1_epi32(static_cast<int32_t>(StrideOf(image)));
    const __m128i bytes = _mm_add_epi32(columns, _mm_add_epi32(columns, columns));
    _mm_store_si128(reinterpret_cast<__m128i*>(places->offset),
                    _mm_sub_epi32(bytes, _mm_mullo_epi32(_mm256_cvttpd_epi32(row), stride)));
    return true;
}

KFX_AVX2 void BlendRowAvx2(const WorkingImage* from, int32_t y, const double* shifts, WorkingImage* to) {
    const uint8_t* top = PictureRow(from, 0);
    const size_t stride = StrideOf(from);
    uint8_t* out = PictureRow(to, y);
    const __m256d row = _mm256_set1_pd(y);
    const __m256d four = _mm256_set1_pd(4);
    __m256d column = _mm256_setr_pd(0, 1, 2, 3);
    InnerPlaces places;
    int32_t x = 0;
    for (; x + 4 <= from->width; x += 4, out += 12, column = _mm256_add_pd(column, four)) {
        const __m256d shift = _mm256_loadu_pd(shifts + x);
        if (!FindInnerPlaces(_mm256_add_pd(column, shift), _mm256_add_pd(row, shift), from, &places)) {
            BlendRun(from, x, x + 4, y, shifts, to);
            continue;
        }
        const __m128i first =
            _mm_packs_epi32(BlendPlace(places, 0, top, stride), BlendPlace(places, 1, top, stride));
        const __m128i second =
            _mm_packs_epi32(BlendPlace(places, 2, top, stride), BlendPlace(places, 3, top, stride));
        StoreFourPixels(_mm_packus_epi16(first, second), out);
    }
    BlendRun(from, x, from->width, y, shifts, to);
}

#endif

}  // namespace

void BlendShiftedRow(const WorkingImage* from, int32_t y, const double* shifts, WorkingImage* to) {
#if KFX_HAS_AVX2
    if (from->bitCount == 24 && from->width > 1 && from->height > 1 && UseAvx2())
        return BlendRowAvx2(from, y, shifts, to);
#endif
    BlendRun(from, 0, from->width, y, shifts, to);
}

}  // namespace kfx
