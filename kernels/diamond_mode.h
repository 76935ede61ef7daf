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
};

// Counters of the painter, zeroed: for each level, and for each count how many levels have it.
constexpr size_t CounterCount(int32_t reach) {
    const auto n = static_cast<size_t>(reach);
    return 256 + 2 * n * (n + 1) + 2;
}

// Finds, for each of the `count` pixels of row r from column x on, the offset in the plane of the pixel whose
// colour it takes. That is the last pixel, in visiting order, of the level with the most pixels in the
// diamond. If several levels have equally many, it is the level that was first to reach its final count.
void PaintRow(const Diamond& diamond, const LevelPlane& plane, int32_t r, int32_t x, int32_t count,
              uint16_t* counters, size_t* winners);

}  // namespace kfx
