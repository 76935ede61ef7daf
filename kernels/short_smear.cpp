// SPDX-License-Identifier: MIT
#include "kernels/short_smear.h"

#include <algorithm>
#include <cstring>

#include "framework/memory_guards.h"
#include "kernels/vector_bytes.h"

#if KFX_HAS_AVX2

namespace kfx {
namespace {

constexpr int32_t kBlockSamples = 32;   // summed side by side
constexpr int32_t kStripColumns = 256;  // a strip's widened rows stay in the cache

// How far the taps reach from their pixel.
struct Reach {
    int32_t left, right, down, up;
};

// What the blocks of one row share.
struct Line {
    const Tap* taps;
    int32_t count;
    const float** rows;    // where each tap's samples for the row begin
    const float* weights;  // of the merged taps
    int32_t mergedCount;
    const float** mergedRows;
    float margin;  // how far an estimate may be off, in levels
    // Where all samples have one value, the ordered sum lies on that level or a hair below it, and is
    // truncated to the level below. One bit for each value: whether it is.
    const uint32_t* below;
};

// The rows of the picture that a row's taps touch, as floats, with the background on both sides.
struct WidenedRows {
    const WorkingImage* from;
    Reach reach;
    int32_t count;  // row r stands in slot r % count
    size_t rowFloats;
    float* slots;
    float* background;  // one more row, for those outside the picture
};

Reach ReachOf(const Tap* taps, int32_t count) {
    Reach reach = {0, 0, 0, 0};
    for (int32_t i = 0; i < count; ++i) {
        reach.left = std::max(reach.left, -taps[i].dx);
        reach.right = std::max(reach.right, taps[i].dx);
        reach.down = std::max(reach.down, -taps[i].dy);
        reach.up = std::max(reach.up, taps[i].dy);
    }
    return reach;
}

KFX_AVX2 void WidenBytes(const uint8_t* bytes, int32_t count, float* out) {
    int32_t i = 0;
    for (; i + 8 <= count; i += 8) {
        const __m128i eight = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(bytes + i));
        _mm256_storeu_ps(out + i, _mm256_cvtepi32_ps(_mm256_cvtepu8_epi32(eight)));
    }
    for (; i < count; ++i) out[i] = bytes[i];
}

float* SlotOf(const WidenedRows& rows, int32_t row) {
    return rows.slots + rows.rowFloats * static_cast<size_t>(row % rows.count);
}

// Widens one row of the picture for the strip of `columns` columns from x on.
void WidenRow(const WidenedRows& rows, int32_t row, int32_t x, int32_t columns) {
    const int32_t first = x - rows.reach.left;
    const int32_t all = rows.reach.left + columns + rows.reach.right;
    const int32_t begin = std::clamp(-first, 0, all);
    const int32_t end = std::clamp(rows.from->width - first, begin, all);
    float* out = SlotOf(rows, row);
    const auto background = [&](int32_t from, int32_t to) {
        std::memcpy(out + 3 * static_cast<size_t>(from), rows.background,
                    3 * static_cast<size_t>(to - from) * sizeof(float));
    };
    background(0, begin);
    WidenBytes(StoredRow(rows.from, row) + 3 * static_cast<ptrdiff_t>(first + begin), 3 * (end - begin),
               out + 3 * static_cast<size_t>(begin));
    background(end, all);
}

const float* SamplesOf(const WidenedRows& rows, const Tap& tap, int32_t r) {
    const int32_t row = r + tap.dy;
    const float* samples = row >= 0 && row < rows.from->height ? SlotOf(rows, row) : rows.background;
    return samples + 3 * static_cast<size_t>(rows.reach.left + tap.dx);
}

// Eight levels from each of the four sums, truncated, as 32 bytes.
KFX_AVX2 KFX_INLINE void StoreLevels(__m256i a, __m256i b, __m256i c, __m256i d, uint8_t* out) {
    const __m256i bytes = _mm256_packus_epi16(_mm256_packs_epi32(a, b), _mm256_packs_epi32(c, d));
    const __m256i inOrder = _mm256_permutevar8x32_epi32(bytes, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), inOrder);
}

// Sixteen samples of all taps in their order, in double precision.
KFX_AVX2 void SumInOrder(const Line& line, int32_t at, uint8_t* out) {
    __m256d sums[4];
    for (__m256d& sum : sums) sum = _mm256_setzero_pd();
    for (int32_t i = 0; i < line.count; ++i) {
        const __m256d weight = _mm256_set1_pd(line.taps[i].weight);
        const float* samples = line.rows[i] + at;
        for (int v = 0; v < 4; ++v)
            sums[v] =
                _mm256_add_pd(sums[v], _mm256_mul_pd(weight, _mm256_cvtps_pd(_mm_loadu_ps(samples + 4 * v))));
    }
    const __m128i low = _mm_packs_epi32(_mm256_cvttpd_epi32(sums[0]), _mm256_cvttpd_epi32(sums[1]));
    const __m128i high = _mm_packs_epi32(_mm256_cvttpd_epi32(sums[2]), _mm256_cvttpd_epi32(sums[3]));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_packus_epi16(low, high));
}

// Which of a block's samples have the same value in all taps, one bit each.
KFX_AVX2 uint32_t FlatSamples(const Line& line, int32_t at) {
    uint32_t flat = 0;
    for (int v = 0; v < 4; ++v) {
        const __m256 first = _mm256_loadu_ps(line.mergedRows[0] + at + 8 * v);
        __m256 same = _mm256_cmp_ps(first, first, _CMP_EQ_OQ);
        for (int32_t i = 1; i < line.mergedCount; ++i)
            same = _mm256_and_ps(
                same, _mm256_cmp_ps(first, _mm256_loadu_ps(line.mergedRows[i] + at + 8 * v), _CMP_EQ_OQ));
        flat |= static_cast<uint32_t>(_mm256_movemask_ps(same)) << 8 * v;
    }
    return flat;
}

// The exact results of eight samples that have one value in all taps.
KFX_AVX2 KFX_INLINE __m256i FlatLevels(const Line& line, const float* samples) {
    const __m256i values = _mm256_cvttps_epi32(_mm256_loadu_ps(samples));
    const __m256i words = _mm256_permutevar8x32_epi32(
        _mm256_loadu_si256(reinterpret_cast<const __m256i*>(line.below)), _mm256_srli_epi32(values, 5));
    const __m256i bits = _mm256_srlv_epi32(words, _mm256_and_si256(values, _mm256_set1_epi32(31)));
    return _mm256_sub_epi32(values, _mm256_and_si256(bits, _mm256_set1_epi32(1)));
}

// Computes the samples in doubt exactly: those of flat places from the table, a block with others in order.
KFX_AVX2 void SettleBlock(const Line& line, int32_t at, uint32_t doubts, uint8_t* out) {
    const uint32_t flat = FlatSamples(line, at);
    if (doubts & ~flat) {
        SumInOrder(line, at, out);
        SumInOrder(line, at + 16, out + 16);
        return;
    }
    uint8_t levels[kBlockSamples];
    const float* samples = line.mergedRows[0] + at;
    StoreLevels(FlatLevels(line, samples), FlatLevels(line, samples + 8), FlatLevels(line, samples + 16),
                FlatLevels(line, samples + 24), levels);
    if (flat == UINT32_MAX) {
        std::memcpy(out, levels, kBlockSamples);
        return;
    }
    for (int32_t s = 0; s < kBlockSamples; ++s) out[s] = flat >> s & 1 ? levels[s] : out[s];
}

// Whether each sum lies so near to a whole level that the estimate may have truncated it wrongly.
KFX_AVX2 KFX_INLINE __m256 InDoubt(__m256 sum, __m256 margin) {
    const __m256 level = _mm256_round_ps(sum, _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC);
    const __m256 distance = _mm256_andnot_ps(_mm256_set1_ps(-0.0f), _mm256_sub_ps(sum, level));
    return _mm256_cmp_ps(distance, margin, _CMP_LT_OQ);
}

KFX_AVX2 void SmearSamples(const Line& line, int32_t samples, uint8_t* out) {
    const __m256 margin = _mm256_set1_ps(line.margin);
    for (int32_t at = 0; at < samples; at += kBlockSamples) {
        __m256 a = _mm256_setzero_ps(), b = a, c = a, d = a;
        for (int32_t i = 0; i < line.mergedCount; ++i) {
            const __m256 weight = _mm256_broadcast_ss(line.weights + i);
            const float* from = line.mergedRows[i] + at;
            a = _mm256_add_ps(a, _mm256_mul_ps(weight, _mm256_loadu_ps(from)));
            b = _mm256_add_ps(b, _mm256_mul_ps(weight, _mm256_loadu_ps(from + 8)));
            c = _mm256_add_ps(c, _mm256_mul_ps(weight, _mm256_loadu_ps(from + 16)));
            d = _mm256_add_ps(d, _mm256_mul_ps(weight, _mm256_loadu_ps(from + 24)));
        }
        StoreLevels(_mm256_cvttps_epi32(a), _mm256_cvttps_epi32(b), _mm256_cvttps_epi32(c),
                    _mm256_cvttps_epi32(d), out + at);
        const __m256 doubtA = InDoubt(a, margin), doubtB = InDoubt(b, margin);
        const __m256 doubtC = InDoubt(c, margin), doubtD = InDoubt(d, margin);
        const __m256 any = _mm256_or_ps(_mm256_or_ps(doubtA, doubtB), _mm256_or_ps(doubtC, doubtD));
        if (_mm256_movemask_ps(any) == 0) continue;
        const auto bits = [](__m256 doubt)
                              KFX_AVX2 { return static_cast<uint32_t>(_mm256_movemask_ps(doubt)); };
        SettleBlock(line, at, bits(doubtA) | bits(doubtB) << 8 | bits(doubtC) << 16 | bits(doubtD) << 24,
                    out + at);
    }
}

void SmearStrip(WidenedRows* rows, Line* line, const Tap* merged, WorkingImage* to, int32_t x) {
    uint8_t levels[3 * kStripColumns + kBlockSamples];
    const int32_t columns = std::min(kStripColumns, to->width - x);
    int32_t next = 0;  // the first row that is not widened yet
    for (int32_t r = 0; r < to->height; ++r) {
        for (; next <= r + rows->reach.up && next < to->height; ++next) WidenRow(*rows, next, x, columns);
        for (int32_t i = 0; i < line->mergedCount; ++i) line->mergedRows[i] = SamplesOf(*rows, merged[i], r);
        for (int32_t i = 0; i < line->count; ++i) line->rows[i] = SamplesOf(*rows, line->taps[i], r);
        SmearSamples(*line, 3 * columns, levels);
        std::memcpy(StoredRow(to, r) + 3 * static_cast<size_t>(x), levels, 3 * static_cast<size_t>(columns));
    }
}

}  // namespace

bool SmearShortLine(const WorkingImage* from, WorkingImage* to, const Tap* taps, int32_t count,
                    const Tap* merged, int32_t mergedCount, uint32_t background) {
    const Reach reach = ReachOf(merged, mergedCount);
    const int32_t rowCount = reach.down + reach.up + 1;
    const size_t rowFloats =
        3 * static_cast<size_t>(kStripColumns + reach.left + reach.right) + kBlockSamples;
    const Scratch<float> slots(rowFloats * (static_cast<size_t>(rowCount) + 1));
    const Scratch<float> weights(static_cast<size_t>(mergedCount));
    const Scratch<const float*> rowsOfTaps(static_cast<size_t>(mergedCount) + static_cast<size_t>(count));
    if (!slots || !weights || !rowsOfTaps) return false;

    WidenedRows rows = {.from = from,
                        .reach = reach,
                        .count = rowCount,
                        .rowFloats = rowFloats,
                        .slots = slots.address,
                        .background = slots.address + rowFloats * static_cast<size_t>(rowCount)};
    for (size_t i = 0; i < rowFloats; ++i)
        rows.background[i] = static_cast<float>(background >> (16 - i % 3 * 8) & 255);
    for (int32_t i = 0; i < mergedCount; ++i) weights.address[i] = static_cast<float>(merged[i].weight);
    uint32_t below[8] = {};
    for (uint32_t value = 0; value < 256; ++value) {
        double sum = 0;
        for (int32_t i = 0; i < count; ++i) sum += taps[i].weight * value;
        if (sum < value) below[value / 32] |= uint32_t{1} << value % 32;
    }
    // A weight and a product are each rounded by at most 2^-24 of themselves, together 255 * 2^-23 levels,
    // and a sum below 256 by at most 2^-17. The ordered sum in double precision is off by far less.
    const float margin = 4e-5f + 7.7e-6f * static_cast<float>(mergedCount);
    Line line = {.taps = taps,
                 .count = count,
                 .rows = rowsOfTaps.address + mergedCount,
                 .weights = weights.address,
                 .mergedCount = mergedCount,
                 .mergedRows = rowsOfTaps.address,
                 .margin = margin,
                 .below = below};
    for (int32_t x = 0; x < to->width; x += kStripColumns) SmearStrip(&rows, &line, merged, to, x);
    return true;
}

}  // namespace kfx

#endif
