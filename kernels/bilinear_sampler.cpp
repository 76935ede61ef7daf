// SPDX-License-Identifier: MIT
#include "kernels/bilinear_sampler.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include "framework/cpu.h"
#include "kernels/bilinear_estimate.h"

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

// What is asked for its coordinates, and where the colours go.
struct SampledRow {
    LocatePoints locate;
    const void* context;
    uint32_t fallback;
    uint8_t* out;
};

void PutPoint(const WorkingImage* image, const SampledRow& row, int32_t point, double x, double y) {
    PutColor(SampleBilinear(image, x, y, row.fallback), row.out + 3 * static_cast<ptrdiff_t>(point));
}

void SamplePoint(const WorkingImage* image, const SampledRow& row, int32_t point) {
    double x, y;
    row.locate(row.context, &point, 1, &x, &y);
    PutPoint(image, row, point, x, y);
}

// Coordinates that are known already.
struct KnownPoints {
    const double* x;
    const double* y;
};

void PickPoints(const void* context, const int32_t* points, int32_t count, double* x, double* y) {
    const KnownPoints& known = *static_cast<const KnownPoints*>(context);
    for (int32_t i = 0; i < count; ++i) {
        x[i] = known.x[points[i]];
        y[i] = known.y[points[i]];
    }
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

// Asks for the pixels round a point that is sampled soon, which begin `offset` bytes from the top row. A row
// of points may run across many rows of the picture, so that the processor does not see by itself what comes
// next. The point may lie anywhere.
KFX_AVX2 inline void FetchSoon(const uint8_t* top, size_t stride, uint64_t offset) {
    const uint64_t above = reinterpret_cast<uintptr_t>(top) + offset;
    _mm_prefetch(reinterpret_cast<const char*>(above), _MM_HINT_T0);
    _mm_prefetch(reinterpret_cast<const char*>(above - stride), _MM_HINT_T0);
}

KFX_AVX2 inline uint64_t OffsetOf(double x, double y, size_t stride) {
    const auto column = static_cast<uint64_t>(_mm_cvttsd_si64(_mm_set_sd(x)));
    const auto row = static_cast<uint64_t>(_mm_cvttsd_si64(_mm_set_sd(y)));
    return 3 * column - row * stride;
}
constexpr int32_t kSoon = 64;  // points

// Doubtful points are few and unforeseeable: a branch for each group of eight would throw away what the
// processor has begun of the next ones. So they are listed and settled later, and so are groups with points
// that are not inner ones.
constexpr int32_t kTurn = kMostLocated;  // points between two turns of settling
struct DoubtfulPoints {
    int32_t first;
    uint32_t channels;  // of DoubtfulChannels()
};
struct Unsettled {
    DoubtfulPoints doubtful[kTurn / 8];
    int32_t outer[kTurn / 8];  // the first point of a group
    DoubtfulPoints* lastDoubtful;
    int32_t* lastOuter;

    // Of each point, when the doubtful and then the others are settled.
    int32_t number[kTurn];
    double x[kTurn];
    double y[kTurn];
};

void Clear(Unsettled* unsettled) {
    unsettled->lastDoubtful = unsettled->doubtful;
    unsettled->lastOuter = unsettled->outer;
}

KFX_AVX2 inline void AddDoubtful(int32_t first, uint32_t channels, Unsettled* unsettled) {
    *unsettled->lastDoubtful = {first, channels};
    unsettled->lastDoubtful += channels != 0;
}

// Lists the numbers of doubtful points, one for each turn of the loop.
int32_t ListDoubtful(Unsettled* unsettled) {
    int32_t count = 0;
    for (DoubtfulPoints* group = unsettled->doubtful; group < unsettled->lastDoubtful;) {
        const int place = std::countr_zero(group->channels) & 28;  // the first doubtful point's first bit
        unsettled->number[count++] = group->first + place / 4;
        group->channels &= ~(15U << place);
        group += group->channels == 0;
    }
    return count;
}

int32_t ListOuter(Unsettled* unsettled) {
    int32_t count = 0;
    for (const int32_t* first = unsettled->outer; first < unsettled->lastOuter; ++first)
        for (int32_t point = *first; point < *first + 8; ++point) unsettled->number[count++] = point;
    return count;
}

KFX_AVX2 void Settle(const WorkingImage* image, const SampledRow& row, Unsettled* unsettled) {
    const uint8_t* top = PictureRow(image, 0);
    const size_t stride = StrideOf(image);
    int32_t count = ListDoubtful(unsettled);
    row.locate(row.context, unsettled->number, count, unsettled->x, unsettled->y);
    for (int32_t i = 0; i < count; ++i) {
        const __m128i exact = BlendExactly(top, stride, unsettled->x[i], unsettled->y[i]);
        const __m128i words = _mm_packs_epi32(exact, exact);
        const int32_t pixel = _mm_cvtsi128_si32(_mm_packus_epi16(words, words));
        std::memcpy(row.out + 3 * static_cast<ptrdiff_t>(unsettled->number[i]), &pixel, 3);
    }
    if (unsettled->lastOuter > unsettled->outer) {
        count = ListOuter(unsettled);
        row.locate(row.context, unsettled->number, count, unsettled->x, unsettled->y);
        for (int32_t i = 0; i < count; ++i)
            PutPoint(image, row, unsettled->number[i], unsettled->x[i], unsettled->y[i]);
    }
    Clear(unsettled);
}

KFX_AVX2 void SampleRowAvx2(const WorkingImage* image, const KnownPoints& known, const SampledRow& row,
                            KeptInnerPoints* kept, int32_t count) {
    const uint8_t* top = PictureRow(image, 0);
    const size_t stride = StrideOf(image);
    const InnerArea area = MakeInnerArea(image);
    KeptInnerPoints own;  // of rows that are not kept
    Unsettled unsettled;
    Clear(&unsettled);
    int32_t i = 0;
    while (i + 8 <= count) {
        for (const int32_t end = std::min(count - 7, i + kTurn); i < end; i += 8) {
            const int32_t soon = std::min(i + kSoon, count - 1);
            FetchSoon(top, stride, OffsetOf(known.x[soon], known.y[soon], stride));
            KeptInnerPoints* group = kept ? kept + i / 8 : &own;
            InnerPoints points;
            if (FindInnerPoints(known.x + i, known.y + i, area, group->offset, &points)) {
                uint8_t* pixels = row.out + 3 * static_cast<ptrdiff_t>(i);
                AddDoubtful(i, PutEstimates(points, top, stride, pixels), &unsettled);
                if (kept) Keep(points, group);
            } else {
                *unsettled.lastOuter++ = i;
                group->offset[0] = kNotInner;
            }
        }
        Settle(image, row, &unsettled);
    }
    for (; i < count; ++i) SamplePoint(image, row, i);
}

KFX_AVX2 void SampleKeptRowAvx2(const WorkingImage* image, const KeptInnerPoints* kept, const SampledRow& row,
                                int32_t count) {
    const uint8_t* top = PictureRow(image, 0);
    const size_t stride = StrideOf(image);
    Unsettled unsettled;
    Clear(&unsettled);
    int32_t i = 0;
    while (i + 8 <= count) {
        for (const int32_t end = std::min(count - 7, i + kTurn); i < end; i += 8) {
            const int32_t soon = std::min(i + kSoon, count - 8);
            FetchSoon(top, stride, static_cast<uint64_t>(int64_t{kept[soon / 8].offset[0]}));
            if (kept[i / 8].offset[0] == kNotInner) {
                *unsettled.lastOuter++ = i;
                continue;
            }
            uint8_t* pixels = row.out + 3 * static_cast<ptrdiff_t>(i);
            AddDoubtful(i, PutEstimates(Kept(kept[i / 8]), top, stride, pixels), &unsettled);
        }
        Settle(image, row, &unsettled);
    }
    for (; i < count; ++i) SamplePoint(image, row, i);
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
               const KeptRow& kept, uint8_t* out) {
    const KnownPoints known = {x, y};
    const SampledRow row = {PickPoints, &known, fallback, out};
#if KFX_HAS_AVX2
    if (UseAvx2()) {
        SampleRowAvx2(image, known, row, static_cast<KeptInnerPoints*>(kept.groups), count);
        if (kept.groups) *kept.filled = 1;
        return;
    }
#endif
    for (int32_t i = 0; i < count; ++i) SamplePoint(image, row, i);
}

void SampleKeptRow(const WorkingImage* image, const KeptRow& kept, LocatePoints locate, const void* context,
                   int32_t count, uint32_t fallback, uint8_t* out) {
    const SampledRow row = {locate, context, fallback, out};
#if KFX_HAS_AVX2
    if (UseAvx2())
        return SampleKeptRowAvx2(image, static_cast<const KeptInnerPoints*>(kept.groups), row, count);
#endif
    for (int32_t i = 0; i < count; ++i) SamplePoint(image, row, i);
}

}  // namespace kfx
