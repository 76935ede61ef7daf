// SPDX-License-Identifier: MIT
#include "kernels/diamond_mode.h"

#include <algorithm>
#include <cstring>

#include "framework/cpu.h"
#if KFX_HAS_AVX2
#include <immintrin.h>
#endif

namespace kfx {
namespace {

// How many pixels in the diamond have each level. `withCount[c]` is the number of levels with c pixels; with
// it the greatest count stays known while pixels are added and removed.
struct Census {
    uint16_t* counts;
    uint16_t* withCount;
    int32_t best;

    void Add(uint8_t level) {
        const int32_t count = ++counts[level];
        --withCount[count - 1];
        ++withCount[count];
        best = std::max(best, count);
    }

    void Remove(uint8_t level) {
        const int32_t count = counts[level]--;
        --withCount[count];
        ++withCount[count - 1];
        if (withCount[best] == 0) --best;
    }
};

// Walks the visiting order backwards until every level with the greatest count has been met; the one met last
// wins.
const uint8_t* FindWinner(const Census& census, const Diamond& diamond, const LevelPlane& plane,
                          const uint8_t* centre) {
    bool met[256] = {};
    int32_t left = census.withCount[census.best];
    for (int32_t s = 2 * diamond.reach; s >= 0; --s) {
        const DiamondSpan& span = diamond.spans[s];
        const uint8_t* row = centre + span.row * static_cast<ptrdiff_t>(plane.stride);
        for (int32_t x = span.last; x >= span.first; --x) {
            const uint8_t level = row[x];
            if (census.counts[level] != census.best || met[level]) continue;
            met[level] = true;
            if (--left == 0) return row + x;
        }
    }
    return centre;  // not reached: a diamond has pixels
}

void PaintRowPlain(const Diamond& diamond, const LevelPlane& plane, const uint8_t* centre, int32_t count,
                   uint16_t* counters, size_t* winners) {
    const int32_t spans = 2 * diamond.reach + 1;
    std::memset(counters, 0, CounterCount(diamond.reach) * sizeof *counters);
    Census census = {counters, counters + 256, 0};
    census.withCount[0] = 256;
    for (int32_t s = 0; s < spans; ++s)
        for (int32_t x = diamond.spans[s].first; x <= diamond.spans[s].last; ++x)
            census.Add(centre[diamond.spans[s].row * static_cast<ptrdiff_t>(plane.stride) + x]);
    for (int32_t i = 0; i < count; ++i, ++centre) {
        winners[i] = static_cast<size_t>(FindWinner(census, diamond, plane, centre) - plane.levels);
        for (int32_t s = 0; s < spans; ++s) {
            const DiamondSpan& span = diamond.spans[s];
            const uint8_t* row = centre + span.row * static_cast<ptrdiff_t>(plane.stride);
            if (row[span.first] == row[span.last + 1]) continue;
            census.Remove(row[span.first]);
            census.Add(row[span.last + 1]);
        }
    }
}

#if KFX_HAS_AVX2

constexpr int32_t kFarthestReachInBytes = 10;  // 2 * 10 * 11 + 1 pixels fit a byte, a span fits 32 bytes
constexpr int32_t kMostSpans = 2 * kFarthestReachInBytes + 1;

KFX_AVX2 inline int32_t GreatestByte(const uint8_t* counts) {
    __m256i most = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(counts));
    for (int i = 1; i < 8; ++i)
        most = _mm256_max_epu8(most, _mm256_loadu_si256(reinterpret_cast<const __m256i*>(counts + 32 * i)));
    __m128i half = _mm_max_epu8(_mm256_castsi256_si128(most), _mm256_extracti128_si256(most, 1));
    half = _mm_and_si128(_mm_max_epu8(half, _mm_srli_epi16(half, 8)), _mm_set1_epi16(255));
    // The least of the complements is the complement of the greatest.
    const __m128i least = _mm_minpos_epu16(_mm_xor_si128(half, _mm_set1_epi16(-1)));
    return ~_mm_cvtsi128_si32(least) & 255;
}

// Writes the levels whose count is `best`; returns how many.
KFX_AVX2 inline int32_t ListLevels(const uint8_t* counts, int32_t best, uint8_t* levels) {
    const __m256i wanted = _mm256_set1_epi8(static_cast<char>(best));
    int32_t found = 0;
    for (int i = 0; i < 8; ++i) {
        const __m256i part = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(counts + 32 * i));
        auto mask = static_cast<uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(part, wanted)));
        for (; mask; mask &= mask - 1) levels[found++] = static_cast<uint8_t>(32 * i + __builtin_ctz(mask));
    }
    return found;
}

// As FindWinner, a span at a time. `rows` are the spans' first pixels.
KFX_AVX2 inline const uint8_t* FindWinnerAvx2(const Diamond& diamond, const uint8_t* const* rows, ptrdiff_t i,
                                              uint8_t* levels, int32_t left) {
    for (int32_t s = 2 * diamond.reach; s >= 0; --s) {
        const DiamondSpan& span = diamond.spans[s];
        const uint32_t inside = (2u << (span.last - span.first)) - 1;
        // The reach is kFarthestReachInBytes at most, so that all spans have a row.
        // NOLINTNEXTLINE(clang-analyzer-core.UndefinedBinaryOperatorResult)
        const __m256i pixels = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(rows[s] + i));
        int32_t earliest = 32;
        int32_t kept = 0;
        for (int32_t l = 0; l < left; ++l) {
            const __m256i same = _mm256_cmpeq_epi8(pixels, _mm256_set1_epi8(static_cast<char>(levels[l])));
            const uint32_t mask = static_cast<uint32_t>(_mm256_movemask_epi8(same)) & inside;
            if (mask)
                earliest = std::min(earliest, 31 - __builtin_clz(mask));
            else
                levels[kept++] = levels[l];
        }
        // The last ones met in this span: the leftmost of their last pixels is met after the others.
        if (kept == 0) return rows[s] + i + earliest;
        left = kept;
    }
    return rows[2 * diamond.reach] + i;  // not reached: a diamond has pixels
}

KFX_AVX2 void PaintRowAvx2(const Diamond& diamond, const LevelPlane& plane, const uint8_t* centre,
                           int32_t count, size_t* winners) {
    const int32_t spans = 2 * diamond.reach + 1;
    alignas(32) uint8_t counts[256] = {};
    const uint8_t* rows[kMostSpans];
    int32_t widths[kMostSpans];
    for (int32_t s = 0; s < spans; ++s) {
        const DiamondSpan& span = diamond.spans[s];
        rows[s] = centre + span.row * static_cast<ptrdiff_t>(plane.stride) + span.first;
        widths[s] = span.last - span.first + 1;
        for (int32_t x = 0; x < widths[s]; ++x) ++counts[rows[s][x]];
    }
    uint8_t levels[256];
    for (int32_t i = 0; i < count; ++i) {
        const int32_t tied = ListLevels(counts, GreatestByte(counts), levels);
        winners[i] = static_cast<size_t>(FindWinnerAvx2(diamond, rows, i, levels, tied) - plane.levels);
        for (int32_t s = 0; s < spans; ++s) {
            --counts[rows[s][i]];
            ++counts[rows[s][i + widths[s]]];
        }
    }
}

#endif

}  // namespace

void PaintRow(const Diamond& diamond, const LevelPlane& plane, int32_t r, int32_t x, int32_t count,
              uint16_t* counters, size_t* winners) {
    const uint8_t* centre = plane.levels + static_cast<size_t>(r) * plane.stride + static_cast<size_t>(x);
#if KFX_HAS_AVX2
    if (UseAvx2() && diamond.reach <= kFarthestReachInBytes) {
        PaintRowAvx2(diamond, plane, centre, count, winners);
        return;
    }
#endif
    PaintRowPlain(diamond, plane, centre, count, counters, winners);
}

}  // namespace kfx
