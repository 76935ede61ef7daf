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

// Where in the picture the colour is of a pixel of the diamond, from the centre's.
inline int32_t PlaceOf(const LevelPlane& plane, int32_t row, int32_t x) {
    return row * static_cast<int32_t>(plane.pictureStride) + 3 * x;
}

// Walks the visiting order backwards until every level with the greatest count has been met; the one met last
// wins.
int32_t FindWinner(const Census& census, const Diamond& diamond, const LevelPlane& plane,
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
            if (--left == 0) return PlaceOf(plane, span.row, x);
        }
    }
    return 0;  // not reached: a diamond has pixels
}

void PaintRowPlain(const Diamond& diamond, const LevelPlane& plane, const uint8_t* centre, int32_t count,
                   uint16_t* counters, int32_t* winners) {
    const int32_t spans = 2 * diamond.reach + 1;
    std::memset(counters, 0, CounterCount(diamond.reach) * sizeof *counters);
    Census census = {counters, counters + 256, 0};
    census.withCount[0] = 256;
    for (int32_t s = 0; s < spans; ++s)
        for (int32_t x = diamond.spans[s].first; x <= diamond.spans[s].last; ++x)
            census.Add(centre[diamond.spans[s].row * static_cast<ptrdiff_t>(plane.stride) + x]);
    for (int32_t i = 0; i < count; ++i, ++centre) {
        winners[i] = FindWinner(census, diamond, plane, centre);
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

// The greatest of 256 counts, in every byte.
KFX_AVX2 KFX_INLINE __m256i GreatestBytes(const __m256i counts[8]) {
    const __m256i most = _mm256_max_epu8(
        _mm256_max_epu8(_mm256_max_epu8(counts[0], counts[1]), _mm256_max_epu8(counts[2], counts[3])),
        _mm256_max_epu8(_mm256_max_epu8(counts[4], counts[5]), _mm256_max_epu8(counts[6], counts[7])));
    __m128i half = _mm_max_epu8(_mm256_castsi256_si128(most), _mm256_extracti128_si256(most, 1));
    half = _mm_and_si128(_mm_max_epu8(half, _mm_srli_epi16(half, 8)), _mm_set1_epi16(255));
    // The least of the complements is the complement of the greatest.
    const __m128i ones = _mm_set1_epi16(-1);
    return _mm256_broadcastb_epi8(_mm_xor_si128(_mm_minpos_epu16(_mm_xor_si128(half, ones)), ones));
}

// Writes the levels with the greatest count; returns how many.
KFX_AVX2 KFX_INLINE int32_t ListLevels(const uint8_t* counts, uint8_t* levels) {
    __m256i parts[8];
    for (int i = 0; i < 8; ++i)
        parts[i] = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(counts + 32 * i));
    const __m256i greatest = GreatestBytes(parts);
    __m256i found = _mm256_setzero_si256();  // bit i of byte k: the level 32 * i + k
    for (int i = 0; i < 8; ++i)
        found = _mm256_or_si256(found, _mm256_and_si256(_mm256_cmpeq_epi8(parts[i], greatest),
                                                        _mm256_set1_epi8(static_cast<char>(1 << i))));
    uint8_t bits[32];
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(bits), found);
    auto bytes =
        ~static_cast<uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(found, _mm256_setzero_si256())));
    int32_t count = 0;
    do {
        const int32_t k = __builtin_ctz(bytes);
        for (uint32_t i = bits[k]; i; i &= i - 1)
            levels[count++] = static_cast<uint8_t>(32 * __builtin_ctz(i) + k);
        bytes &= bytes - 1;
    } while (bytes);
    return count;
}

// The spans that are met first, one behind the other in the bits of a word: the later one is met, the lower.
struct MiddleSpans {
    static constexpr int kCount = 3;
    static_assert(kCount * (2 * kFarthestReachInBytes + 1) <= 64);
    uint32_t inside[kCount];
    int32_t shift[kCount];
    int32_t place[64];  // of each bit
};

MiddleSpans ListMiddleSpans(const Diamond& diamond, const LevelPlane& plane) {
    MiddleSpans middle;
    int32_t bit = 0;
    for (int s = MiddleSpans::kCount - 1; s >= 0; --s) {
        const DiamondSpan& span = diamond.spans[2 * diamond.reach - s];
        middle.inside[s] = (2u << (span.last - span.first)) - 1;
        middle.shift[s] = bit;
        for (int32_t x = span.first; x <= span.last; ++x) middle.place[bit++] = PlaceOf(plane, span.row, x);
    }
    return middle;
}

// As FindWinner, a span at a time. `rows` are the spans' first pixels.
KFX_AVX2 inline int32_t FindWinnerAvx2(const Diamond& diamond, const LevelPlane& plane,
                                       const uint8_t* const* rows, ptrdiff_t i, uint8_t* levels,
                                       int32_t left) {
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
        if (kept == 0) return PlaceOf(plane, span.row, span.first + earliest);
        left = kept;
    }
    return 0;  // not reached: a diamond has pixels
}

// Most winners lie in the diamond's middle, where they are found without a branch for each span.
KFX_AVX2 KFX_INLINE int32_t FindMiddleWinner(const Diamond& diamond, const LevelPlane& plane,
                                             const MiddleSpans& middle, const uint8_t* const* rows,
                                             ptrdiff_t i, uint8_t* levels, int32_t left) {
    __m256i pixels[MiddleSpans::kCount];
    for (int s = 0; s < MiddleSpans::kCount; ++s)
        pixels[s] = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(rows[2 * diamond.reach - s] + i));
    int32_t earliest = 63;
    for (int32_t l = 0; l < left; ++l) {
        const __m256i level = _mm256_set1_epi8(static_cast<char>(levels[l]));
        uint64_t met = 0;
        for (int s = 0; s < MiddleSpans::kCount; ++s) {
            const __m256i same = _mm256_cmpeq_epi8(pixels[s], level);
            met |= static_cast<uint64_t>(static_cast<uint32_t>(_mm256_movemask_epi8(same)) & middle.inside[s])
                   << middle.shift[s];
        }
        if (met == 0) return FindWinnerAvx2(diamond, plane, rows, i, levels, left);
        earliest = std::min(earliest, 63 - __builtin_clzll(met));
    }
    return middle.place[earliest];
}

// Each counter waits for its last change to be stored, and a level that stands in many pixels is changed
// again and again. So several rows with counters of their own take turns, change by change.
template <int kRows>
KFX_AVX2 void PaintRowsAvx2(const Diamond& diamond, const LevelPlane& plane, const uint8_t* centre,
                            int32_t count, int32_t* winners) {
    const int32_t spans = 2 * diamond.reach + 1;
    const MiddleSpans middle = ListMiddleSpans(diamond, plane);
    alignas(32) uint8_t counts[kRows][256] = {};
    const uint8_t* rows[kRows][kMostSpans];
    int32_t widths[kMostSpans];
    for (int32_t s = 0; s < spans; ++s) {
        const DiamondSpan& span = diamond.spans[s];
        widths[s] = span.last - span.first + 1;
        for (int k = 0; k < kRows; ++k) {
            rows[k][s] = centre + (span.row + k) * static_cast<ptrdiff_t>(plane.stride) + span.first;
            for (int32_t x = 0; x < widths[s]; ++x) ++counts[k][rows[k][s][x]];
        }
    }
    uint8_t levels[256];
    for (int32_t i = 0; i < count; ++i) {
        for (int k = 0; k < kRows; ++k) {
            const int32_t tied = ListLevels(counts[k], levels);
            winners[k * count + i] = FindMiddleWinner(diamond, plane, middle, rows[k], i, levels, tied);
        }
        for (int32_t s = 0; s < spans; ++s) {
            const uint8_t* leaving = rows[0][s] + i;
            const uint8_t* entering = leaving + widths[s];
            for (int k = 0; k < kRows; ++k) {
                --counts[k][leaving[k * static_cast<ptrdiff_t>(plane.stride)]];
                ++counts[k][entering[k * static_cast<ptrdiff_t>(plane.stride)]];
            }
        }
    }
}

#endif

}  // namespace

void PaintRows(const Diamond& diamond, const LevelPlane& plane, int32_t r, int32_t rows, int32_t x,
               int32_t count, uint16_t* counters, int32_t* winners) {
    const uint8_t* centre = plane.levels + static_cast<size_t>(r) * plane.stride + static_cast<size_t>(x);
#if KFX_HAS_AVX2
    if (UseAvx2() && diamond.reach <= kFarthestReachInBytes) {
        if (rows == kPaintedRows) return PaintRowsAvx2<kPaintedRows>(diamond, plane, centre, count, winners);
        for (int32_t k = 0; k < rows; ++k, centre += plane.stride, winners += count)
            PaintRowsAvx2<1>(diamond, plane, centre, count, winners);
        return;
    }
#endif
    for (int32_t k = 0; k < rows; ++k, centre += plane.stride, winners += count)
        PaintRowPlain(diamond, plane, centre, count, counters, winners);
}

}  // namespace kfx
