// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstring>

#include "framework/cpu.h"
#include "kernels/scaler_passes.h"
#include "kernels/scaler_rounding.h"

namespace kfx {
namespace {

// A pass over rows converts each row once, because it lies under the filters of several rows of the result,
// into a ring of as many rows as a filter has weights. Strips of the picture are done one after another, so
// narrow that the ring stays in the nearest cache.
constexpr size_t kBlock = 64;             // sums that stay in registers over all rows under a filter
constexpr size_t kRingFloats = 6 * 1024;  // three blocks of a row at least: see kManyWeights
constexpr size_t kAlignment = 64;         // bytes: eight numbers never lie in two lines of the cache

struct RowRing {
    float* floats;
    int32_t rows;
    size_t width;   // of a strip, a multiple of kBlock
    int32_t begin;  // the picture's rows that are in the ring
    int32_t end;
    float* RowAt(int32_t y) const { return floats + static_cast<size_t>(y % rows) * width; }
};

float* Aligned(float* floats) {
    const size_t past = reinterpret_cast<uintptr_t>(floats) % kAlignment;
    return past == 0 ? floats : floats + (kAlignment - past) / sizeof(float);
}

KFX_INLINE void Widen(const uint8_t* bytes, size_t count, float* floats) {
    for (size_t b = 0; b < count; ++b) floats[b] = bytes[b];
}

// A strip of one row of the result from `count` rows of the ring.
void SumStrip(const float* const* rows, const float* weights, int32_t count, size_t width, uint8_t* out) {
    constexpr size_t kSums = 16;  // of kBlock: the strip's width in the ring is a multiple of that
    for (size_t first = 0; first < width; first += kSums) {
        float sums[kSums] = {};
        for (int32_t i = 0; i < count; ++i)
            for (size_t b = 0; b < kSums; ++b) sums[b] += weights[i] * rows[i][first + b];
        for (size_t b = 0; b < std::min(kSums, width - first); ++b) out[first + b] = RoundToByte(sums[b]);
    }
}

#if KFX_HAS_AVX2

KFX_AVX2 void SumStripAvx2(const float* const* rows, const float* weights, int32_t count, size_t width,
                           uint8_t* out) {
    for (size_t first = 0; first < width; first += kBlock) {
        __m256 sums[kBlock / 8];
        for (__m256& sum : sums) sum = _mm256_setzero_ps();
        for (int32_t i = 0; i < count; ++i) {
            const __m256 weight = _mm256_broadcast_ss(weights + i);
            const float* row = rows[i] + first;
            for (size_t k = 0; k < kBlock / 8; ++k)
                sums[k] = _mm256_add_ps(sums[k], _mm256_mul_ps(weight, _mm256_load_ps(row + 8 * k)));
        }
        if (first + kBlock <= width) {
            StoreRoundedBytes(sums, out + first);
            StoreRoundedBytes(sums + 4, out + first + kBlock / 2);
        } else {
            uint8_t bytes[kBlock];
            StoreRoundedBytes(sums, bytes);
            StoreRoundedBytes(sums + 4, bytes + kBlock / 2);
            std::memcpy(out + first, bytes, width - first);
        }
    }
}

#endif

// The code for this processor.
auto StripSummer() {
#if KFX_HAS_AVX2
    if (UseAvx2()) return SumStripAvx2;
#endif
    return SumStrip;
}

// When a picture shrinks, each of its rows lies under the filters of several rows of the result. They are
// read and converted once, a few at a time, and added to the sums of all these. A row that is not under a
// filter has the weight 0 there, which leaves the sum as it is, so that each sum is made of the same numbers
// in the same order as row by row.
constexpr int32_t kAddedRows = 4;    // as many as AddRows() names
constexpr size_t kAddedBytes = 128;  // of each row at a time: converted, they stay in the nearest cache

// What is added to the sums of one row of the result.
struct Addition {
    float* sums;  // as many as a row has bytes
    float weights[kAddedRows];
};

// Adds rows of `bytes` bytes.
KFX_INLINE void AddRows(const uint8_t* const (&rows)[kAddedRows], size_t bytes, const Addition* additions,
                        int32_t count) {
    for (size_t first = 0; first < bytes; first += kAddedBytes) {
        const size_t width = std::min(kAddedBytes, bytes - first);
        float a[kAddedBytes], b[kAddedBytes], c[kAddedBytes], d[kAddedBytes];
        for (size_t i = 0; i < width; ++i) a[i] = rows[0][first + i];
        for (size_t i = 0; i < width; ++i) b[i] = rows[1][first + i];
        for (size_t i = 0; i < width; ++i) c[i] = rows[2][first + i];
        for (size_t i = 0; i < width; ++i) d[i] = rows[3][first + i];
        for (int32_t k = 0; k < count; ++k) {
            const float* w = additions[k].weights;
            float* sums = additions[k].sums + first;
            const float wa = w[0], wb = w[1], wc = w[2], wd = w[3];
            for (size_t i = 0; i < width; ++i)
                sums[i] = sums[i] + wa * a[i] + wb * b[i] + wc * c[i] + wd * d[i];
        }
    }
}

KFX_INLINE void StoreSums(const float* sums, size_t bytes, uint8_t* out) {
    for (size_t b = 0; b < bytes; ++b) out[b] = RoundToByte(sums[b]);
}

// The rows of a result that have a sum while the source's rows are added: `begun` is the first that has none
// yet, `done` the first that is not finished. Both only grow, as spans and their ends do.
struct OpenRows {
    const PassTable& table;
    const int32_t height;  // of the result
    int32_t begun = 0;
    int32_t done = 0;

    int32_t EndOf(int32_t r) const { return table.spans.address[r].start + table.spans.address[r].count; }
    // Whether the next row begins before source row `y`.
    bool NextBeginsBefore(int32_t y) const { return begun < height && table.spans.address[begun].start < y; }
    bool NextEndsBy(int32_t y) const { return done < begun && EndOf(done) <= y; }
    float WeightOf(int32_t r, int32_t y) const {
        const PassTable::Span& span = table.spans.address[r];
        const bool under = y >= span.start && y < span.start + span.count;
        return under ? table.WeightsOf(r)[y - span.start] : 0.0f;
    }
};

// The most rows of a result that are open at a time, at least one.
int32_t MostOpenRows(const PassTable& table, int32_t sourceHeight, int32_t height) {
    OpenRows open = {.table = table, .height = height};
    int32_t most = 1;
    for (int32_t y = kAddedRows; y < sourceHeight + kAddedRows; y += kAddedRows) {
        while (open.NextBeginsBefore(y)) ++open.begun;
        most = std::max(most, open.begun - open.done);
        while (open.NextEndsBy(y)) ++open.done;
    }
    return most;
}

// False: memory ran out.
bool SumTogether(const WorkingImage* from, WorkingImage* to, const PassTable& table) {
    const auto addRows = Fastest<AddRows>();
    const auto storeSums = Fastest<StoreSums>();
    const size_t stride = StrideOf(from);
    const int32_t most = MostOpenRows(table, from->height, to->height);
    const Scratch<float> sums(static_cast<size_t>(most) * stride);
    const Scratch<Addition> additions(static_cast<size_t>(most));
    if (!sums || !additions) return false;
    const auto sumsOf = [&](int32_t r) { return sums.address + static_cast<size_t>(r % most) * stride; };
    OpenRows open = {.table = table, .height = to->height};
    for (int32_t y = 0; y < from->height; y += kAddedRows) {
        for (; open.NextBeginsBefore(y + kAddedRows); ++open.begun)
            std::memset(sumsOf(open.begun), 0, stride * sizeof(float));
        const uint8_t* rows[kAddedRows];
        for (int32_t i = 0; i < kAddedRows; ++i) rows[i] = StoredRow(from, std::min(y + i, from->height - 1));
        int32_t count = 0;
        for (int32_t r = open.done; r < open.begun; ++r) {
            Addition& addition = additions[static_cast<size_t>(count++)];
            addition.sums = sumsOf(r);
            for (int32_t i = 0; i < kAddedRows; ++i) addition.weights[i] = open.WeightOf(r, y + i);
        }
        addRows(rows, stride, additions.address, count);
        for (; open.NextEndsBy(y + kAddedRows); ++open.done)
            storeSums(sumsOf(open.done), stride, StoredRow(to, open.done));
    }
    return true;
}

// The fewest weights with which rows are added together: a ring of so many would not stay in the cache.
constexpr size_t kManyWeights = 32;

// False: memory ran out.
bool SumByStrips(const WorkingImage* from, WorkingImage* to, const PassTable& table) {
    const size_t stride = StrideOf(from);
    const size_t blocks = kRingFloats / kBlock / table.stride;
    const size_t stripWidth = std::min(blocks * kBlock, (stride + kBlock - 1) / kBlock * kBlock);
    const Scratch<float> floats(table.stride * stripWidth + kAlignment / sizeof(float));
    const Scratch<const float*> rows(table.stride);
    if (!floats || !rows) return false;
    RowRing ring = {.floats = Aligned(floats.address),
                    .rows = static_cast<int32_t>(table.stride),
                    .width = stripWidth,
                    .begin = 0,
                    .end = 0};
    const auto widen = Fastest<Widen>();
    const auto sumStrip = StripSummer();
    for (size_t first = 0; first < stride; first += stripWidth) {
        const size_t width = std::min(stripWidth, stride - first);
        ring.begin = ring.end = 0;
        for (int32_t r = 0; r < to->height; ++r) {
            const PassTable::Span& span = table.spans[static_cast<size_t>(r)];
            if (span.start < ring.begin || span.start > ring.end) ring.begin = ring.end = span.start;
            for (; ring.end < span.start + span.count; ++ring.end)
                widen(StoredRow(from, ring.end) + first, width, ring.RowAt(ring.end));
            ring.begin = std::max(ring.begin, ring.end - ring.rows);
            for (int32_t i = 0; i < span.count; ++i)
                rows[static_cast<size_t>(i)] = ring.RowAt(span.start + i);
            sumStrip(rows.address, table.WeightsOf(r), span.count, width, StoredRow(to, r) + first);
        }
    }
    return true;
}

}  // namespace

bool SumRows(const WorkingImage* from, WorkingImage* to, const PassTable& table) {
    return table.stride < kManyWeights ? SumByStrips(from, to, table) : SumTogether(from, to, table);
}

}  // namespace kfx
