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

// Where the colours of a row go.
struct Colors {
    uint32_t fallback;
    uint8_t* out;
};

void PutPoint(const WorkingImage* image, int32_t point, double x, double y, const Colors& colors) {
    PutColor(SampleBilinear(image, x, y, colors.fallback), colors.out + 3 * static_cast<ptrdiff_t>(point));
}

// Points `first` to `end` - 1, all of them exactly.
void PutPoints(const WorkingImage* image, const PointRow& row, int32_t first, int32_t end,
               const Colors& colors) {
    constexpr int32_t kTogether = 64;
    int32_t points[kTogether];
    double x[kTogether], y[kTogether];
    while (first < end) {
        const int32_t count = std::min(kTogether, end - first);
        for (int32_t i = 0; i < count; ++i) points[i] = first + i;
        row.locate(row.context, points, count, x, y);
        for (int32_t i = 0; i < count; ++i) PutPoint(image, points[i], x[i], y[i], colors);
        first += count;
    }
}

#if KFX_HAS_AVX2

// The three channels of a pixel as doubles. Reads one byte more.
KFX_AVX2 inline __m256d ToDoubles(const uint8_t* pixel) {
    int32_t bytes;
    std::memcpy(&bytes, pixel, sizeof bytes);
    return _mm256_cvtepi32_pd(_mm_cvtepu8_epi32(_mm_cvtsi32_si128(bytes)));
}

// The channels of a point whose neighbours all lie inside, with a half added: the plain path's sums in its
// order.
KFX_AVX2 inline __m256d BlendExactly(const uint8_t* top, size_t stride, double x, double y) {
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
    return _mm256_add_pd(value, _mm256_set1_pd(0.5));
}

// From an estimated place to the exact one a channel changes by no more than this, in levels.
constexpr double kChannelError = 2 * 255 * kPlaceError + 1e-6;

// Whether such a change could change a byte.
KFX_AVX2 inline bool IsNearBoundary(__m256d channels) {
    const __m256d low = _mm256_floor_pd(_mm256_sub_pd(channels, _mm256_set1_pd(kChannelError)));
    const __m256d high = _mm256_floor_pd(_mm256_add_pd(channels, _mm256_set1_pd(kChannelError)));
    return (_mm256_movemask_pd(_mm256_cmp_pd(low, high, _CMP_NEQ_UQ)) & 7) != 0;
}

KFX_AVX2 inline void PutChannels(__m256d channels, uint8_t* out) {
    const __m128i levels = _mm256_cvttpd_epi32(channels);
    const __m128i words = _mm_packs_epi32(levels, levels);
    const int32_t pixel = _mm_cvtsi128_si32(_mm_packus_epi16(words, words));
    std::memcpy(out, &pixel, 3);
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

// Estimated places of some points of a row.
struct Estimates {
    LocatePoints estimate;
    const void* context;
};

void PickEstimates(const void* context, const int32_t* points, int32_t count, double* x, double* y) {
    const PointRow& row = *static_cast<const PointRow*>(context);
    for (int32_t i = 0; i < count; ++i) {
        x[i] = row.x[points[i]];
        y[i] = row.y[points[i]];
    }
}

// How much an estimated coordinate and its rounding may be off.
constexpr double kMargin = 2 * kPlaceError;

// Whether the exact place, too, lies so far outside that its colour is the fallback.
bool IsOutside(const WorkingImage* image, double x, double y) {
    const double left = x + 0.5;
    const double top = y + 0.5;
    return left < -1 - kMargin || left > image->width + kMargin || top < -1 - kMargin ||
           top > image->height + kMargin;
}

// Whether the exact place, too, has these four neighbours. BlendExactly() reads a byte behind the right one.
bool IsInside(const WorkingImage* image, double x, double y) {
    const double left = x + 0.5;
    const double top = y + 0.5;
    const auto isBetween = [](double value) {
        const double fraction = value - std::floor(value);
        return fraction > kMargin && fraction < 1 - kMargin;
    };
    return left > 0 && left < image->width - 2 && top > 0 && top < image->height - 1 && isBetween(left) &&
           isBetween(top);
}

// The exact colours of the first `count` listed points.
void PutListed(const WorkingImage* image, const PointRow& row, int32_t count, const Colors& colors,
               Unsettled* unsettled) {
    row.locate(row.context, unsettled->number, count, unsettled->x, unsettled->y);
    for (int32_t i = 0; i < count; ++i)
        PutPoint(image, unsettled->number[i], unsettled->x[i], unsettled->y[i], colors);
}

// Of a hundred doubtful points, blends at their estimated places leave nine in doubt.
KFX_AVX2 void SettleDoubtful(const WorkingImage* image, const PointRow& row, const Estimates& estimates,
                             const Colors& colors, Unsettled* unsettled) {
    const uint8_t* top = PictureRow(image, 0);
    const size_t stride = StrideOf(image);
    int32_t* const number = unsettled->number;
    const int32_t count = ListDoubtful(unsettled);
    estimates.estimate(estimates.context, number, count, unsettled->x, unsettled->y);
    int32_t undecided = 0;
    for (int32_t i = 0; i < count; ++i) {
        const __m256d channels = BlendExactly(top, stride, unsettled->x[i], unsettled->y[i]);
        PutChannels(channels, colors.out + 3 * static_cast<ptrdiff_t>(number[i]));
        number[undecided] = number[i];
        undecided += IsNearBoundary(channels);
    }
    PutListed(image, row, undecided, colors, unsettled);
}

KFX_AVX2 void SettleOuter(const WorkingImage* image, const PointRow& row, const Estimates& estimates,
                          const Colors& colors, Unsettled* unsettled) {
    const uint8_t* top = PictureRow(image, 0);
    const size_t stride = StrideOf(image);
    int32_t* const number = unsettled->number;
    const int32_t count = ListOuter(unsettled);
    estimates.estimate(estimates.context, number, count, unsettled->x, unsettled->y);
    int32_t undecided = 0;
    for (int32_t i = 0; i < count; ++i) {
        const double x = unsettled->x[i], y = unsettled->y[i];
        uint8_t* const out = colors.out + 3 * static_cast<ptrdiff_t>(number[i]);
        if (IsOutside(image, x, y)) {
            PutColor(colors.fallback, out);
            continue;
        }
        if (IsInside(image, x, y)) {
            const __m256d channels = BlendExactly(top, stride, x, y);
            if (!IsNearBoundary(channels)) {
                PutChannels(channels, out);
                continue;
            }
        }
        number[undecided++] = number[i];
    }
    PutListed(image, row, undecided, colors, unsettled);
}

KFX_AVX2 void Settle(const WorkingImage* image, const PointRow& row, const Estimates& estimates,
                     const Colors& colors, Unsettled* unsettled) {
    if (unsettled->lastDoubtful > unsettled->doubtful)
        SettleDoubtful(image, row, estimates, colors, unsettled);
    if (unsettled->lastOuter > unsettled->outer) SettleOuter(image, row, estimates, colors, unsettled);
    Clear(unsettled);
}

// The last group of a row begins eight points before its end: where the row is no multiple of eight, some
// points are done twice.
int32_t GroupsOf(int32_t count) { return (count + 7) / 8; }

// A row of at least eight points.
KFX_AVX2 void SampleRowAvx2(const WorkingImage* image, const PointRow& row, const Colors& colors,
                            KeptInnerPoints* kept) {
    const uint8_t* top = PictureRow(image, 0);
    const size_t stride = StrideOf(image);
    const InnerArea area = MakeInnerArea(image);
    KeptInnerPoints own;  // of rows that are not kept
    Unsettled unsettled;
    Clear(&unsettled);
    const int32_t groups = GroupsOf(row.count);
    for (int32_t k = 0; k < groups;) {
        for (const int32_t end = std::min(groups, k + kTurn / 8); k < end; ++k) {
            const int32_t i = std::min(8 * k, row.count - 8);
            const int32_t soon = std::min(i + kSoon, row.count - 1);
            FetchSoon(top, stride, OffsetOf(row.x[soon], row.y[soon], stride));
            KeptInnerPoints* group = kept ? kept + k : &own;
            InnerPoints points;
            if (FindInnerPoints(row.x + i, row.y + i, area, group->offset, &points)) {
                uint8_t* pixels = colors.out + 3 * static_cast<ptrdiff_t>(i);
                AddDoubtful(i, PutEstimates(points, top, stride, pixels), &unsettled);
                if (kept) Keep(points, group);
            } else {
                *unsettled.lastOuter++ = i;
                group->offset[0] = kNotInner;
            }
        }
        Settle(image, row, {PickEstimates, &row}, colors, &unsettled);
    }
}

KFX_AVX2 void SampleKeptRowAvx2(const WorkingImage* image, const PointRow& row, const Colors& colors,
                                const KeptInnerPoints* kept) {
    const uint8_t* top = PictureRow(image, 0);
    const size_t stride = StrideOf(image);
    Unsettled unsettled;
    Clear(&unsettled);
    const int32_t groups = GroupsOf(row.count);
    for (int32_t k = 0; k < groups;) {
        for (const int32_t end = std::min(groups, k + kTurn / 8); k < end; ++k) {
            const int32_t i = std::min(8 * k, row.count - 8);
            const int32_t soon = std::min(k + kSoon / 8, groups - 1);
            FetchSoon(top, stride, static_cast<uint64_t>(int64_t{kept[soon].offset[0]}));
            if (kept[k].offset[0] == kNotInner) {
                *unsettled.lastOuter++ = i;
                continue;
            }
            uint8_t* pixels = colors.out + 3 * static_cast<ptrdiff_t>(i);
            AddDoubtful(i, PutEstimates(Kept(kept[k]), top, stride, pixels), &unsettled);
        }
        Settle(image, row, {row.estimate, row.context}, colors, &unsettled);
    }
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

void SampleRow(const WorkingImage* image, const PointRow& row, uint32_t fallback,
               [[maybe_unused]] const KeptRow& kept, uint8_t* out) {
#if KFX_HAS_AVX2
    if (UseAvx2() && row.count >= 8) {
        SampleRowAvx2(image, row, {fallback, out}, static_cast<KeptInnerPoints*>(kept.groups));
        if (kept.groups) *kept.filled = 1;
        return;
    }
#endif
    PutPoints(image, row, 0, row.count, {fallback, out});
}

void SampleKeptRow(const WorkingImage* image, const PointRow& row, uint32_t fallback,
                   [[maybe_unused]] const KeptRow& kept, uint8_t* out) {
#if KFX_HAS_AVX2
    if (UseAvx2() && row.count >= 8)
        return SampleKeptRowAvx2(image, row, {fallback, out},
                                 static_cast<const KeptInnerPoints*>(kept.groups));
#endif
    PutPoints(image, row, 0, row.count, {fallback, out});
}

}  // namespace kfx
