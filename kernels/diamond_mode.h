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
constexpr size_t SpanCount(int32_t reach) { return 2 * static_cast<size_t>(reach) + 1; }

// Counters of the painter: for each level, and for each count how many levels have it.
constexpr size_t CounterCount(int32_t reach) {
    const auto n = static_cast<size_t>(reach);
    return 256 + 2 * n * (n + 1) + 2;
}

// Working memory of the painter.
struct DiamondScratch {
    DiamondSpan* spans;  // SpanCount()
    uint16_t* counters;  // CounterCount()
};

// The pixels that are painted, and their surroundings. Rows are numbered as they are stored. Levels are
// readable for as many pixels on each side as the diamond reaches, for one row more behind them, and for 32
// bytes more at the end of each row, of any value.
struct PaintedArea {
    int32_t rows;
    int32_t columns;
    const uint8_t* levels;  // of the first pixel: brightness
    size_t levelStride;
    const uint8_t* from;  // the first pixel, three bytes each
    size_t fromStride;
    uint8_t* to;  // where it goes
    size_t toStride;
};

// Gives each pixel the colour of the last pixel, in visiting order, of the level with the most pixels in the
// diamond around it. If several levels have equally many, it is the level that was first to reach its final
// count. The diamond has `reach` pixels on each side of its centre, at least 1; its rows above and below
// stand one pixel to the right of its middle row. They are visited from the farthest to the nearest, of two
// equally far ones the one at the smaller row first, and the middle row last.
void PaintModes(int32_t reach, const PaintedArea& area, const DiamondScratch& scratch);

}  // namespace kfx
