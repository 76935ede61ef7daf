// SPDX-License-Identifier: MIT
// Gathers pixels for a colour cube: a cell for each of the 32,768 colours of 15 bits adds up what lies in it.
#pragma once

#include <cstdint>

#include "builder/color_cube.h"
#include "framework/memory_guards.h"

namespace kfx {

// Sums over the pixels of a cell, of the low three bits of their channels. Packed, so that a pixel costs two
// additions.
struct ColorCell {
    uint64_t countAndSquares;  // count << 32, sum of the squares
    uint64_t lows;             // red << 42, green << 21, blue
};

struct ColorCells {
    ColorCells();

    // Neighbouring pixels go to two tables in turn, since they are often alike and an addition to the same
    // cell would have to wait for the one before.
    const Scratch<ColorCell> cells;  // test its address before use
    uint32_t pending = 0;            // pixels since the cells were last emptied
    ColorCell steps[512];            // what one pixel adds, by its nine low bits
};

// Adds `count` pixels (blue, green, red) to the cells, which overflow into the cube's deepest nodes in time.
void AddPixels(ColorCells* cells, const uint8_t* pixels, int32_t count, ColorCube* cube);

// Empties the cells into the cube's deepest nodes.
void EmptyCells(ColorCells* cells, ColorCube* cube);

}  // namespace kfx
