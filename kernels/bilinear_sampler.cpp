// SPDX-License-Identifier: MIT
#include "kernels/bilinear_sampler.h"

#include <cmath>

#include "framework/cpu.h"
#include "kernels/vector_bytes.h"

namespace kfx {
namespace {

uint32_t Blend(uint32_t c00, uint32_t c10, uint32_t c01, uint32_t c11, double fx, double fy) {
    const double value = ((c10 * fx + c00 * (1 - fx)) * (1 - fy) + (c01 * (1 - fx) + c11 * fx) * fy) + 0.5;
    return static_cast<uint32_t>(value) & 255;
}

void PutColor(uint32_t color, uint8_t* out) {
    out[0] = static_cast<uint8_t>(BlueOf(color));
    out[1] = static_cast<uint8_t>(GreenOf(color));
    out[2] = static_cast<uint8_t>(RedOf(color));
}

#if KFX_HAS_AVX2

// The three channels of the pixel in the low bytes, as doubles.
KFX_AVX2 inline __m256d ToDoubles(__m128i pixel) { return _mm256_cvtepi32_pd(_mm_cvtepu8_epi32(pixel)); }

// Four points whose neighbours all lie inside, one point in each lane. The channels of a point are then
// blended with one channel in each lane.
struct InnerPoints {
    alignas(32) double fx[4];
    alignas(32) double fy[4];
    alignas(16) int32_t offset[4];  // of the upper left neighbour, from the picture's top row
};

// The rounded channels of point i in 32-bit lanes.
KFX_AVX2 inline __m128i BlendPoint(const InnerPoints& points, int i, const uint8_t* top, size_t stride) {
    // Both neighbours of a row in one load of 8 bytes.
    const uint8_t* upper = top + points.offset[i];
    const __m128i above = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(upper));
    const __m128i below = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(upper - stride));
    const __m256d one = _mm256_set1_pd(1);
    const __m256d fx = _mm256_broadcast_sd(&points.fx[i]);
    const __m256d fy = _mm256_broadcast_sd(&points.fy[i]);
    const __m256d gx = _mm256_sub_pd(one, fx);
    const __m256d gy = _mm256_sub_pd(one, fy);
    const __m256d p00 = ToDoubles(above);
    const __m256d p10 = ToDoubles(_mm_srli_si128(above, 3));
    const __m256d p01 = ToDoubles(below);
    const __m256d p11 = ToDoubles(_mm_srli_si128(below, 3));
    const __m256d upperRow = _mm256_add_pd(_mm256_mul_pd(p10, fx), _mm256_mul_pd(p00, gx));
    const __m256d lowerRow = _mm256_add_pd(_mm256_mul_pd(p01, gx), _mm256_mul_pd(p11, fx));
    const __m256d value = _mm256_add_pd(_mm256_mul_pd(upperRow, gy), _mm256_mul_pd(lowerRow, fy));
    return _mm256_cvttpd_epi32(_mm256_add_pd(value, _mm256_set1_pd(0.5)));
}

// Fills `points` and returns true if the neighbours of all four points lie inside, next to each other, with
// one column more for the 8-byte loads. Adding 1 to a coordinate may round up to the pixel after the next
// one: such points are left to the plain path.
KFX_AVX2 inline bool FindInnerPoints(__m256d x, __m256d y, const WorkingImage* image, InnerPoints* points) {
    const __m256d one = _mm256_set1_pd(1);
    const __m256d zero = _mm256_setzero_pd();
    const __m256d column = _mm256_floor_pd(x);
    const __m256d row = _mm256_floor_pd(y);
    const __m256d nextColumn = _mm256_floor_pd(_mm256_add_pd(x, one));
    const __m256d nextRow = _mm256_floor_pd(_mm256_add_pd(y, one));
    __m256d inside = _mm256_and_pd(_mm256_cmp_pd(x, zero, _CMP_GE_OQ), _mm256_cmp_pd(y, zero, _CMP_GE_OQ));
    const __m256d lastColumn = _mm256_set1_pd(image->width - 2);
    const __m256d lastRow = _mm256_set1_pd(image->height);
    inside = _mm256_and_pd(inside, _mm256_cmp_pd(nextColumn, lastColumn, _CMP_LE_OQ));
    inside = _mm256_and_pd(inside, _mm256_cmp_pd(nextRow, lastRow, _CMP_LT_OQ));
    inside = _mm256_and_pd(inside, _mm256_cmp_pd(_mm256_add_pd(column, one), nextColumn, _CMP_EQ_OQ));
    inside = _mm256_and_pd(inside, _mm256_cmp_pd(_mm256_add_pd(row, one), nextRow, _CMP_EQ_OQ));
    if (_mm256_movemask_pd(inside) != 15) return false;
    _mm256_store_pd(points->fx, _mm256_sub_pd(x, column));
    _mm256_store_pd(points->fy, _mm256_sub_pd(y, row));
    const __m128i columns = _mm256_cvttpd_epi32(column);
    const __m128i rows = _mm256_cvttpd_epi32(row);
    const __m128i stride = _mm_set1_epi32(static_cast<int32_t>(StrideOf(image)));
    const __m128i bytes = _mm_add_epi32(columns, _mm_add_epi32(columns, columns));
    _mm_store_si128(reinterpret_cast<__m128i*>(points->offset),
                    _mm_sub_epi32(bytes, _mm_mullo_epi32(rows, stride)));
    return true;
}

KFX_AVX2 void SampleRowAvx2(const WorkingImage* image, const double* x, const double* y, int32_t count,
                            uint32_t fallback, uint8_t* out) {
    const uint8_t* top = PictureRow(image, 0);
    const size_t stride = StrideOf(image);
    const __m256d half = _mm256_set1_pd(0.5);
    InnerPoints points;
    int32_t i = 0;
    for (; i + 4 <= count; i += 4, out += 12) {
        if (!FindInnerPoints(_mm256_add_pd(_mm256_loadu_pd(x + i), half),
                             _mm256_add_pd(_mm256_loadu_pd(y + i), half), image, &points)) {
            for (int32_t k = 0; k < 4; ++k)
                PutColor(SampleBilinear(image, x[i + k], y[i + k], fallback), out + 3 * k);
            continue;
        }
        const __m128i first =
            _mm_packs_epi32(BlendPoint(points, 0, top, stride), BlendPoint(points, 1, top, stride));
        const __m128i second =
            _mm_packs_epi32(BlendPoint(points, 2, top, stride), BlendPoint(points, 3, top, stride));
        StoreFourPixels(_mm_packus_epi16(first, second), out);
    }
    for (; i < count; ++i, out += 3) PutColor(SampleBilinear(image, x[i], y[i], fallback), out);
}

#endif

}  // namespace

uint32_t SampleBilinear(const WorkingImage* image, double x, double y, uint32_t fallback) {
    const double left = x + 0.5;
    const double top = y + 0.5;
    if (!(left >= -1 && left < image->width && top >= -1 && top < image->height)) return fallback & 0xFFFFFF;
    // Truncated, not rounded down: for a point left of column 0 both columns become column 0. `hasLeft` tells
    // that the first of them lies outside.
    const auto x0 = static_cast<int32_t>(left);
    const auto y0 = static_cast<int32_t>(top);
    const auto x1 = static_cast<int32_t>(left + 1);
    const auto y1 = static_cast<int32_t>(top + 1);
    const bool hasLeft = left >= 0;
    const bool hasTop = top >= 0;
    const bool hasRight = left + 1 < image->width;
    const bool hasBottom = top + 1 < image->height;
    const uint8_t* origin = PictureRow(image, 0);
    const size_t stride = StrideOf(image);
    const auto pixel = [origin, stride](int32_t column, int32_t row) {
        const uint8_t* bytes = origin + 3 * static_cast<size_t>(column) - static_cast<size_t>(row) * stride;
        return Rgb(bytes[2], bytes[1], bytes[0]);
    };
    const uint32_t p00 = hasLeft && hasTop ? pixel(x0, y0) : fallback;
    const uint32_t p10 = hasRight && hasTop ? pixel(x1, y0) : fallback;
    const uint32_t p01 = hasLeft && hasBottom ? pixel(x0, y1) : fallback;
    const uint32_t p11 = hasRight && hasBottom ? pixel(x1, y1) : fallback;
    const double fx = left - std::floor(left);
    const double fy = top - std::floor(top);
    return Rgb(Blend(RedOf(p00), RedOf(p10), RedOf(p01), RedOf(p11), fx, fy),
               Blend(GreenOf(p00), GreenOf(p10), GreenOf(p01), GreenOf(p11), fx, fy),
               Blend(BlueOf(p00), BlueOf(p10), BlueOf(p01), BlueOf(p11), fx, fy));
}

void SampleRow(const WorkingImage* image, const double* x, const double* y, int32_t count, uint32_t fallback,
               uint8_t* out) {
#if KFX_HAS_AVX2
    if (UseAvx2()) return SampleRowAvx2(image, x, y, count, fallback, out);
#endif
    for (int32_t i = 0; i < count; ++i, out += 3) PutColor(SampleBilinear(image, x[i], y[i], fallback), out);
}

}  // namespace kfx
