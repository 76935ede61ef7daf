// SPDX-License-Identifier: MIT
#include "kernels/bilinear_sampler.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

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

// The three channels of a pixel as doubles. Reads one byte more.
KFX_AVX2 inline __m256d ToDoubles(const uint8_t* pixel) {
    int32_t bytes;
    std::memcpy(&bytes, pixel, sizeof bytes);
    return _mm256_cvtepi32_pd(_mm_cvtepu8_epi32(_mm_cvtsi32_si128(bytes)));
}

// The rounded channels of a point whose neighbours all lie inside, in 32-bit lanes: the plain path's sums in
// its order.
KFX_AVX2 inline __m128i BlendExactly(const uint8_t* top, size_t stride, double x, double y) {
    const double left = x + 0.5;
    const double upper = y + 0.5;
    const double column = std::floor(left);
    const double row = std::floor(upper);
    const uint8_t* above = top + 3 * static_cast<ptrdiff_t>(column) -
                           static_cast<ptrdiff_t>(row) * static_cast<ptrdiff_t>(stride);
    const uint8_t* below = above - stride;
    const __m256d fx = _mm256_set1_pd(left - column);
    const __m256d fy = _mm256_set1_pd(upper - row);
    const __m256d gx = _mm256_sub_pd(_mm256_set1_pd(1), fx);
    const __m256d gy = _mm256_sub_pd(_mm256_set1_pd(1), fy);
    const __m256d p00 = ToDoubles(above);
    const __m256d p10 = ToDoubles(above + 3);
    const __m256d p01 = ToDoubles(below);
    const __m256d p11 = ToDoubles(below + 3);
    const __m256d upperRow = _mm256_add_pd(_mm256_mul_pd(p10, fx), _mm256_mul_pd(p00, gx));
    const __m256d lowerRow = _mm256_add_pd(_mm256_mul_pd(p01, gx), _mm256_mul_pd(p11, fx));
    const __m256d value = _mm256_add_pd(_mm256_mul_pd(upperRow, gy), _mm256_mul_pd(lowerRow, fy));
    return _mm256_cvttpd_epi32(_mm256_add_pd(value, _mm256_set1_pd(0.5)));
}

// Estimates are whole numbers of 2^-15 of a level.
constexpr int kFractionBits = 15;
constexpr int32_t kLevel = 1 << kFractionBits;
constexpr int32_t kHalfLevel = kLevel / 2;

// No estimate is farther from the exact value than this. The weights of columns are rounded to whole 2^-15,
// so that they are off by 2^-16 and a level by at most 255 times as much, 127.5 units; single precision adds
// less than two.
constexpr int32_t kDoubt = 130;

// Eight points whose neighbours all lie inside, and with them the 16 bytes from the left neighbour on.
struct InnerPoints {
    __m256i columnWeights;  // of the left neighbour in the low, of the right one in the high word
    __m256 fy;
    alignas(32) int32_t offset[8];  // of the upper left neighbour, from the picture's top row
};

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
KFX_AVX2 inline __m128i Rows(const double* y, __m128* fy) {
    const __m256d upper = _mm256_add_pd(_mm256_loadu_pd(y), _mm256_set1_pd(0.5));
    const __m256d row = _mm256_floor_pd(upper);
    *fy = _mm256_cvtpd_ps(_mm256_sub_pd(upper, row));
    return _mm256_cvttpd_epi32(row);
}

// Fills `points` and returns true if all eight points are inner ones. Left out are also those that are
// rounded to a whole column or to the next row: a weight of one, 2^15, does not fit in a signed word, and
// next to a boundary adding 1 to a coordinate may round up to the pixel after the next one.
KFX_AVX2 inline bool FindInnerPoints(const double* x, const double* y, const InnerArea& area,
                                     InnerPoints* points) {
    const __m256i scaled = _mm256_set_m128i(ScaledColumns(x + 4), ScaledColumns(x));
    __m128 frontFy, backFy;
    const __m128i frontRows = Rows(y, &frontFy);
    const __m256i rows = _mm256_set_m128i(Rows(y + 4, &backFy), frontRows);
    points->fy = _mm256_set_m128(backFy, frontFy);
    const __m256i fraction = _mm256_and_si256(scaled, _mm256_set1_epi32(kLevel - 1));
    const __m256i zero = _mm256_setzero_si256();
    __m256i inside =
        _mm256_and_si256(_mm256_cmpgt_epi32(scaled, zero), _mm256_cmpgt_epi32(area.endColumn, scaled));
    inside = _mm256_and_si256(inside, _mm256_cmpgt_epi32(fraction, zero));
    inside = _mm256_and_si256(inside, _mm256_cmpgt_epi32(rows, _mm256_set1_epi32(-1)));
    inside = _mm256_and_si256(inside, _mm256_cmpgt_epi32(area.endRow, rows));
    const __m256 beforeNext = _mm256_cmp_ps(points->fy, _mm256_set1_ps(1), _CMP_LT_OQ);
    if (_mm256_movemask_ps(_mm256_and_ps(_mm256_castsi256_ps(inside), beforeNext)) != 255) return false;
    const __m256i left = _mm256_sub_epi32(_mm256_set1_epi32(kLevel), fraction);
    points->columnWeights = _mm256_or_si256(left, _mm256_slli_epi32(fraction, 16));
    const __m256i columns = _mm256_srli_epi32(scaled, kFractionBits);
    const __m256i bytes = _mm256_add_epi32(columns, _mm256_add_epi32(columns, columns));
    _mm256_store_si256(reinterpret_cast<__m256i*>(points->offset),
                       _mm256_sub_epi32(bytes, _mm256_mullo_epi32(rows, area.stride)));
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

// Asks for the pixels round a point that is sampled soon. A row of points may run across many rows of the
// picture, so that the processor does not see by itself what comes next. The point may lie anywhere.
KFX_AVX2 inline void FetchSoon(const uint8_t* top, size_t stride, double x, double y) {
    const auto column = static_cast<uint64_t>(_mm_cvttsd_si64(_mm_set_sd(x)));
    const auto row = static_cast<uint64_t>(_mm_cvttsd_si64(_mm_set_sd(y)));
    const uint64_t above = reinterpret_cast<uintptr_t>(top) + 3 * column - row * stride;
    _mm_prefetch(reinterpret_cast<const char*>(above), _MM_HINT_T0);
    _mm_prefetch(reinterpret_cast<const char*>(above - stride), _MM_HINT_T0);
}
constexpr int32_t kSoon = 64;  // points

// Eight points some of which are doubtful.
struct DoubtfulPoints {
    int32_t first;
    uint32_t channels;  // of DoubtfulChannels()
};

constexpr int32_t kTurn = 512;  // points between two turns of settling doubtful ones

// Doubtful points are few and unforeseeable: a branch for each group of eight would throw away what the
// processor has begun of the next ones. So they are listed and settled later, one for each turn of the loop.
KFX_AVX2 void SettlePoints(const WorkingImage* image, const double* x, const double* y,
                           DoubtfulPoints* points, const DoubtfulPoints* end, uint8_t* out) {
    const uint8_t* top = PictureRow(image, 0);
    const size_t stride = StrideOf(image);
    while (points < end) {
        const int place = std::countr_zero(points->channels) & 28;  // the first doubtful point's first bit
        const int32_t i = points->first + place / 4;
        const __m128i exact = BlendExactly(top, stride, x[i], y[i]);
        const __m128i words = _mm_packs_epi32(exact, exact);
        const int32_t pixel = _mm_cvtsi128_si32(_mm_packus_epi16(words, words));
        std::memcpy(out + 3 * static_cast<ptrdiff_t>(i), &pixel, 3);
        points->channels &= ~(15U << place);
        points += points->channels == 0;
    }
}

KFX_AVX2 void SampleRowAvx2(const WorkingImage* image, const double* x, const double* y, int32_t count,
                            uint32_t fallback, uint8_t* out) {
    const uint8_t* top = PictureRow(image, 0);
    const size_t stride = StrideOf(image);
    const InnerArea area = MakeInnerArea(image);
    InnerPoints points;
    DoubtfulPoints doubtful[kTurn / 8];
    int32_t i = 0;
    while (i + 8 <= count) {
        DoubtfulPoints* last = doubtful;
        for (const int32_t end = std::min(count - 7, i + kTurn); i < end; i += 8) {
            const int32_t soon = std::min(i + kSoon, count - 1);
            FetchSoon(top, stride, x[soon], y[soon]);
            uint8_t* pixels = out + 3 * static_cast<ptrdiff_t>(i);
            if (!FindInnerPoints(x + i, y + i, area, &points)) {
                for (int32_t k = i; k < i + 8; ++k, pixels += 3)
                    PutColor(SampleBilinear(image, x[k], y[k], fallback), pixels);
                continue;
            }
            const __m256i pairs[] = {
                EstimatePair<0>(points, top, stride), EstimatePair<1>(points, top, stride),
                EstimatePair<2>(points, top, stride), EstimatePair<3>(points, top, stride)};
            __m256i levels[4];
            for (int k = 0; k < 4; ++k) levels[k] = _mm256_srli_epi32(pairs[k], kFractionBits);
            StorePairs(levels, pixels);
            *last = {i, DoubtfulChannels(pairs)};
            last += last->channels != 0;
        }
        SettlePoints(image, x, y, doubtful, last, out);
    }
    for (; i < count; ++i)
        PutColor(SampleBilinear(image, x[i], y[i], fallback), out + 3 * static_cast<ptrdiff_t>(i));
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
