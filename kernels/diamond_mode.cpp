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

struct Diamond {
    int32_t reach;
    const DiamondSpan* spans;  // in visiting order
};

void ListSpans(int32_t reach, DiamondSpan* spans) {
    for (int32_t k = 0; k < reach; ++k) {
        *spans++ = {-(reach - k), 1 - k, 1 + k};
        *spans++ = {reach - k, 1 - k, 1 + k};
    }
    *spans = {0, -reach, reach};
}

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
inline ptrdiff_t PlaceOf(const PaintedArea& area, int32_t row, int32_t x) {
    return row * static_cast<ptrdiff_t>(area.fromStride) + 3 * ptrdiff_t{x};
}

// Walks the visiting order backwards until every level with the greatest count has been met; the one met last
// wins.
ptrdiff_t FindWinner(const Census& census, const Diamond& diamond, const PaintedArea& area,
                     const uint8_t* centre) {
    bool met[256] = {};
    int32_t left = census.withCount[census.best];
    for (int32_t s = 2 * diamond.reach; s >= 0; --s) {
        const DiamondSpan& span = diamond.spans[s];
        const uint8_t* row = centre + span.row * static_cast<ptrdiff_t>(area.levelStride);
        for (int32_t x = span.last; x >= span.first; --x) {
            const uint8_t level = row[x];
            if (census.counts[level] != census.best || met[level]) continue;
            met[level] = true;
            if (--left == 0) return PlaceOf(area, span.row, x);
        }
    }
    return 0;  // not reached: a diamond has pixels
}

// Row r of the area.
void PaintRowPlain(const Diamond& diamond, const PaintedArea& area, int32_t r, uint16_t* counters) {
    const int32_t spans = 2 * diamond.reach + 1;
    const auto stride = static_cast<ptrdiff_t>(area.levelStride);
    const uint8_t* centre = area.levels + r * stride;
    const uint8_t* from = area.from + static_cast<size_t>(r) * area.fromStride;
    uint8_t* to = area.to + static_cast<size_t>(r) * area.toStride;
    std::memset(counters, 0, CounterCount(diamond.reach) * sizeof *counters);
    Census census = {counters, counters + 256, 0};
    census.withCount[0] = 256;
    for (int32_t s = 0; s < spans; ++s)
        for (int32_t x = diamond.spans[s].first; x <= diamond.spans[s].last; ++x)
            census.Add(centre[diamond.spans[s].row * stride + x]);
    for (int32_t i = 0; i < area.columns; ++i, ++centre, from += 3, to += 3) {
        std::memcpy(to, from + FindWinner(census, diamond, area, centre), 3);
        for (int32_t s = 0; s < spans; ++s) {
            const DiamondSpan& span = diamond.spans[s];
            const uint8_t* row = centre + span.row * stride;
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

// The levels with the greatest count: bit i of byte k stands for the level 32 * i + k.
KFX_AVX2 KFX_INLINE __m256i FindModes(const __m256i counts[8]) {
    const __m256i greatest = GreatestBytes(counts);
    __m256i modes = _mm256_setzero_si256();
    for (int i = 0; i < 8; ++i)
        modes = _mm256_or_si256(modes, _mm256_and_si256(_mm256_cmpeq_epi8(counts[i], greatest),
                                                        _mm256_set1_epi8(static_cast<char>(1 << i))));
    return modes;
}

// Writes the levels of FindModes() one by one; returns how many.
KFX_AVX2 KFX_INLINE int32_t ListModes(const uint8_t* modes, uint8_t* levels) {
    const __m256i all = _mm256_load_si256(reinterpret_cast<const __m256i*>(modes));
    auto bytes = ~static_cast<uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(all, _mm256_setzero_si256())));
    int32_t count = 0;
    do {
        const int32_t k = __builtin_ctz(bytes);
        for (uint32_t i = modes[k]; i; i &= i - 1)
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
    ptrdiff_t place[64];  // of each bit
};

MiddleSpans ListMiddleSpans(const Diamond& diamond, const PaintedArea& area) {
    MiddleSpans middle;
    int32_t bit = 0;
    for (int s = MiddleSpans::kCount - 1; s >= 0; --s) {
        const DiamondSpan& span = diamond.spans[2 * diamond.reach - s];
        middle.inside[s] = (2u << (span.last - span.first)) - 1;
        middle.shift[s] = bit;
        for (int32_t x = span.first; x <= span.last; ++x) middle.place[bit++] = PlaceOf(area, span.row, x);
    }
    return middle;
}

// As FindWinner, a span at a time. `rows` are the spans' first pixels.
KFX_AVX2 inline ptrdiff_t FindWinnerAvx2(const Diamond& diamond, const PaintedArea& area,
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
        if (kept == 0) return PlaceOf(area, span.row, span.first + earliest);
        left = kept;
    }
    return 0;  // not reached: a diamond has pixels
}

// Most winners lie in the diamond's middle, where they are found without a branch for each span.
KFX_AVX2 KFX_INLINE ptrdiff_t FindMiddleWinner(const Diamond& diamond, const PaintedArea& area,
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
        if (met == 0) return FindWinnerAvx2(diamond, area, rows, i, levels, left);
        earliest = std::min(earliest, 63 - __builtin_clzll(met));
    }
    return middle.place[earliest];
}

// A tile is painted row by row. From a pixel to its right neighbour the census changes by the pixels that
// leave at the diamond's left edges and enter at its right ones. Two of the four edges lie along diagonals,
// on which row and column grow together; two along antidiagonals, on which the column falls. The same change
// one pixel farther along its line differs in the edges' ends only. So the changes of each line that crosses
// the tile are kept, and added to the census as a whole, as a square's median filter does with the counts of
// columns (Perreault and Hebert, "Median Filtering in Constant Time", 2007). The first pixel of the middle
// row and the one behind its last count as changes of the diagonal. Counts wrap around.
constexpr int32_t kTileColumns = 48;  // with so many the tile fits into the nearest cache
struct Tile {
    alignas(32) uint8_t diagonal[kTileColumns][256];  // of the line through a column of the row
    alignas(32) uint8_t antidiagonal[kTileColumns][256];
    alignas(32) uint8_t first[256];  // the census of the row's first pixel
    alignas(32) uint8_t modes[kTileColumns][32];
};

// Where the changes of a row's first pixel stand. Those of the next pixels follow, round and round.
struct TileStart {
    int32_t diagonal;
    int32_t antidiagonal;
};

struct TileShape {
    int32_t reach;
    int32_t columns;
    ptrdiff_t stride;  // of levels
};

// The changes from the pixel at `level` to its right neighbour.
void FillDiagonal(const TileShape& shape, const uint8_t* level, uint8_t* changes) {
    std::memset(changes, 0, 256);
    const int32_t n = shape.reach;
    --changes[level[-n]];
    ++changes[level[n + 1]];
    for (int32_t k = 1; k <= n; ++k) {
        --changes[level[k * shape.stride + 1 - n + k]];
        ++changes[level[-k * shape.stride + 2 + n - k]];
    }
}

void FillAntidiagonal(const TileShape& shape, const uint8_t* level, uint8_t* changes) {
    std::memset(changes, 0, 256);
    const int32_t n = shape.reach;
    for (int32_t k = 1; k <= n; ++k) {
        --changes[level[-k * shape.stride + 1 - n + k]];
        ++changes[level[k * shape.stride + 2 + n - k]];
    }
}

// From the changes of the pixel at `level` to those of the next pixel on the diagonal.
inline void MoveDiagonal(const TileShape& shape, const uint8_t* level, uint8_t* changes) {
    const int32_t n = shape.reach;
    const uint8_t* below = level + shape.stride;
    ++changes[level[-n]];
    --changes[below[1 - n]];
    --changes[level[n + 1]];
    ++changes[below[n + 2]];
    ++changes[below[2 - n]];
    --changes[below[n * shape.stride + 2]];
    ++changes[level[n + 2]];
    --changes[level[-n * shape.stride + 2]];
}

inline void MoveAntidiagonal(const TileShape& shape, const uint8_t* level, uint8_t* changes) {
    const int32_t n = shape.reach;
    const uint8_t* below = level + shape.stride;
    ++changes[level[-n * shape.stride + 1]];
    --changes[level[1 - n]];
    ++changes[below[n * shape.stride + 1]];
    --changes[below[n + 1]];
}

// From the census of the pixel at `level` to that of the pixel below it.
void MoveDown(const TileShape& shape, const uint8_t* level, uint8_t* census) {
    const int32_t n = shape.reach;
    for (int32_t x = -n; x <= n; ++x) {
        // The two columns at the left have a pixel of the middle row only.
        const ptrdiff_t half = x < 2 - n ? 0 : x < 1 ? n - 1 + x : n + 1 - x;
        --census[level[x - half * shape.stride]];
        ++census[level[x + (half + 1) * shape.stride]];
    }
}

void StartTile(const TileShape& shape, const Diamond& diamond, const uint8_t* level, Tile* tile) {
    for (int32_t x = 0; x < shape.columns; ++x) {
        FillDiagonal(shape, level + x, tile->diagonal[x]);
        FillAntidiagonal(shape, level + x, tile->antidiagonal[x]);
    }
    std::memset(tile->first, 0, sizeof tile->first);
    for (size_t s = 0; s < SpanCount(shape.reach); ++s)
        for (int32_t x = diamond.spans[s].first; x <= diamond.spans[s].last; ++x)
            ++tile->first[level[diamond.spans[s].row * shape.stride + x]];
}

KFX_AVX2 KFX_INLINE __m256i LoadPart(const uint8_t* counts, int part) {
    return _mm256_load_si256(reinterpret_cast<const __m256i*>(counts + 32 * part));
}

// Finds the modes of one row, and moves all changes on to the next row. The census is in eight registers.
KFX_AVX2 void FindRowModes(const TileShape& shape, const uint8_t* level, TileStart start, Tile* tile) {
    __m256i census[8];
    for (int i = 0; i < 8; ++i) census[i] = LoadPart(tile->first, i);
    for (int32_t x = 0; x < shape.columns; ++x, ++level) {
        _mm256_store_si256(reinterpret_cast<__m256i*>(tile->modes[x]), FindModes(census));
        uint8_t* diagonal = tile->diagonal[start.diagonal];
        uint8_t* antidiagonal = tile->antidiagonal[start.antidiagonal];
        for (int i = 0; i < 8; ++i)
            census[i] =
                _mm256_add_epi8(census[i], _mm256_add_epi8(LoadPart(diagonal, i), LoadPart(antidiagonal, i)));
        MoveDiagonal(shape, level, diagonal);
        MoveAntidiagonal(shape, level, antidiagonal);
        if (++start.diagonal == shape.columns) start.diagonal = 0;
        if (++start.antidiagonal == shape.columns) start.antidiagonal = 0;
    }
}

// The next row's start: a new diagonal comes in at the left, a new antidiagonal at the right, and each takes
// the place of the one that has left at the other side.
TileStart NextRow(const TileShape& shape, const uint8_t* level, TileStart start, Tile* tile) {
    MoveDown(shape, level, tile->first);
    level += shape.stride;
    const int32_t diagonal = start.diagonal > 0 ? start.diagonal - 1 : shape.columns - 1;
    FillDiagonal(shape, level, tile->diagonal[diagonal]);
    FillAntidiagonal(shape, level + shape.columns - 1, tile->antidiagonal[start.antidiagonal]);
    return {diagonal, start.antidiagonal + 1 < shape.columns ? start.antidiagonal + 1 : 0};
}

// Columns from `first` on.
KFX_AVX2 void PaintTile(const Diamond& diamond, const PaintedArea& area, int32_t first, int32_t columns,
                        Tile* tile) {
    const TileShape shape = {diamond.reach, columns, static_cast<ptrdiff_t>(area.levelStride)};
    const MiddleSpans middle = ListMiddleSpans(diamond, area);
    const uint8_t* level = area.levels + first;
    const uint8_t* from = area.from + 3 * static_cast<size_t>(first);
    uint8_t* to = area.to + 3 * static_cast<size_t>(first);
    uint8_t levels[256];
    TileStart start = {0, 0};
    StartTile(shape, diamond, level, tile);
    for (int32_t r = 0; r < area.rows; ++r) {
        const uint8_t* rows[kMostSpans];
        for (size_t s = 0; s < SpanCount(diamond.reach); ++s)
            rows[s] = level + diamond.spans[s].row * shape.stride + diamond.spans[s].first;
        FindRowModes(shape, level, start, tile);
        // In a loop of its own, which is faster: with both in one the processor could not work on two pixels
        // at a time.
        for (int32_t x = 0; x < columns; ++x) {
            const int32_t tied = ListModes(tile->modes[x], levels);
            const uint8_t* pixel = from + 3 * static_cast<size_t>(x);
            std::memcpy(to + 3 * static_cast<size_t>(x),
                        pixel + FindMiddleWinner(diamond, area, middle, rows, x, levels, tied), 3);
        }
        start = NextRow(shape, level, start, tile);
        level += area.levelStride;
        from += area.fromStride;
        to += area.toStride;
    }
}

#endif

}  // namespace

void PaintModes(int32_t reach, const PaintedArea& area, const DiamondScratch& scratch) {
    ListSpans(reach, scratch.spans);
    const Diamond diamond = {reach, scratch.spans};
#if KFX_HAS_AVX2
    if (UseAvx2() && reach <= kFarthestReachInBytes) {
        Tile tile;
        for (int32_t x = 0; x < area.columns; x += kTileColumns)
            PaintTile(diamond, area, x, std::min(kTileColumns, area.columns - x), &tile);
        return;
    }
#endif
    for (int32_t r = 0; r < area.rows; ++r) PaintRowPlain(diamond, area, r, scratch.counters);
}

}  // namespace kfx
