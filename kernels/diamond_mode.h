// SPDX-License-Identifier: MIT
// The mode filter of Oil Painting over a plane of brightness levels.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kfx {

// One stretch of a diamond's row, relative to the pixel that it surrounds.
struct DiamondSpan {
    int32_t row;
    int32_t first;
    int32_t last;
};

struct Diamond {
    int32_t reach;
    const DiamondSpan* spans;  // 2 * reach + 1, in the order in which they are visited
};

// Brightness levels, row by row as the picture's rows are stored. Each row may be read 32 bytes beyond its
// end.
struct LevelPlane {
    const uint8_t* levels;
    size_t stride;
    size_t pictureStride;  // of the picture itself, whose pixels have three bytes
};

// Counters of the painter, zeroed: for each level, and for each count how many levels have it.
constexpr size_t CounterCount(int32_t reach) {
    const auto n = static_cast<size_t>(reach);
    return 256 + 2 * n * (n + 1) + 2;
}

constexpr int32_t kPaintedRows = 8;  // rows that are painted together

// Finds, for each of the `count` pixels from column x on in each of at most kPaintedRows rows from r on, the
// pixel whose colour it takes: how many bytes that stands behind it in the picture. It is the last pixel, in
// visiting order, of the level with the most pixels in the diamond. If several levels have equally many, it
// is the level that was first to reach its final count.
void PaintRows(const Diamond& diamond, const LevelPlane& plane, int32_t r, int32_t rows, int32_t x,
               int32_t count, uint16_t* counters, int32_t* winners);

}  // namespace kfx
