// SPDX-License-Identifier: MIT
#include "builder/color_cells.h"

#include <algorithm>

namespace kfx {
namespace {

constexpr uint32_t kCells = 1u << 15;
constexpr uint32_t kTables = 2;
constexpr uint64_t kSumMask = (1u << 21) - 1;
// A sum of low bits has 21 bits of room and grows by 7 at most.
constexpr uint32_t kMostPending = 1u << 18;
static_assert(uint64_t{kMostPending} * 7 <= kSumMask, "sums of low bits stay apart");
static_assert(uint64_t{kMostPending} * 3 * 49 <= UINT32_MAX, "squares stay below the count");

uint32_t CellOf(uint32_t red, uint32_t green, uint32_t blue) {
    return (red >> 3) << 10 | (green >> 3) << 5 | blue >> 3;
}

uint32_t StepOf(uint32_t red, uint32_t green, uint32_t blue) {
    return (red & 7) << 6 | (green & 7) << 3 | (blue & 7);
}

// The sum of squares of base + low over `count` pixels.
int64_t SquaresFrom(int64_t base, int64_t lows, int64_t count) {
    return base * base * count + 2 * base * lows;
}

void EmptyCell(ColorCell* cell, uint32_t number, ColorCube* cube) {
    const uint32_t redBase = number >> 10 << 3;
    const uint32_t greenBase = (number >> 5 & 31) << 3;
    const uint32_t blueBase = (number & 31) << 3;
    const auto count = static_cast<int64_t>(cell->countAndSquares >> 32);
    const auto red = static_cast<int64_t>(cell->lows >> 42);
    const auto green = static_cast<int64_t>(cell->lows >> 21 & kSumMask);
    const auto blue = static_cast<int64_t>(cell->lows & kSumMask);
    ColorNode& leaf = cube->nodes.address[LeafOf(*cube, redBase, greenBase, blueBase)];
    leaf.count += count;
    leaf.red += redBase * count + red;
    leaf.green += greenBase * count + green;
    leaf.blue += blueBase * count + blue;
    leaf.squares += SquaresFrom(redBase, red, count) + SquaresFrom(greenBase, green, count) +
                    SquaresFrom(blueBase, blue, count) +
                    static_cast<int64_t>(cell->countAndSquares & UINT32_MAX);
    *cell = {};
}

}  // namespace

ColorCells::ColorCells() : cells(size_t{kCells} * kTables) {
    for (uint32_t i = 0; i < 512; ++i) {
        const uint64_t red = i >> 6;
        const uint64_t green = i >> 3 & 7;
        const uint64_t blue = i & 7;
        steps[i] = {.countAndSquares = uint64_t{1} << 32 | (red * red + green * green + blue * blue),
                    .lows = red << 42 | green << 21 | blue};
    }
}

void AddPixels(ColorCells* cells, const uint8_t* pixels, int32_t count, ColorCube* cube) {
    while (count > 0) {
        if (cells->pending == kMostPending) EmptyCells(cells, cube);
        const int32_t span = std::min(count, static_cast<int32_t>(kMostPending - cells->pending));
        for (int32_t x = 0; x < span; ++x, pixels += 3) {
            const ColorCell& step = cells->steps[StepOf(pixels[2], pixels[1], pixels[0])];
            ColorCell& cell = cells->cells.address[CellOf(pixels[2], pixels[1], pixels[0]) * kTables +
                                                   static_cast<uint32_t>(x & 1)];
            cell.countAndSquares += step.countAndSquares;
            cell.lows += step.lows;
        }
        cells->pending += static_cast<uint32_t>(span);
        count -= span;
    }
}

void EmptyCells(ColorCells* cells, ColorCube* cube) {
    for (uint32_t i = 0; i < kCells * kTables; ++i) {
        ColorCell* cell = cells->cells.address + i;
        if (cell->countAndSquares) EmptyCell(cell, i / kTables, cube);
    }
    cells->pending = 0;
}

}  // namespace kfx
