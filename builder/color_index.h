// SPDX-License-Identifier: MIT
// Which palette entry each colour becomes, answered once per colour and build. The answers are those of the
// rules (the nearest entry; or, when remapping fast, an exact match and else the entry nearest to the
// colour's 15-bit rounding); they are found for 4 x 4 x 4 neighbouring colours at a time, when the first of
// them is asked for.
#pragma once

#include <cstddef>
#include <cstdint>

#include "framework/movable_memory.h"

namespace kfx {

struct ColorIndex {
    ColorIndex() = default;
    ~ColorIndex();
    ColorIndex(const ColorIndex&) = delete;
    ColorIndex& operator=(const ColorIndex&) = delete;

    MemoryHandle memory = nullptr;  // both tables, locked; made when first needed
    uint16_t* slots = nullptr;      // for each cube of 64 colours: where its answers stand, 0 while unknown
    uint8_t* answers = nullptr;     // 64 to a slot
    uint32_t usedSlots = 0;
    // The palette, an array per channel, padded to whole vectors with copies of entry 0, which never win a
    // tie.
    int32_t red[256] = {};
    int32_t green[256] = {};
    int32_t blue[256] = {};
    int32_t count = 0;
    int32_t paddedCount = 0;
    bool fast = false;
};

// Makes the index answer for the first `count` (at most 256) entries of a palette; `fast`: remap fast.
// Answers that still hold are kept: asking again for the same costs nothing. False: no memory for the tables.
bool PrepareColorIndex(ColorIndex* index, const uint8_t* palette, int32_t count, bool fast);

// Finds the answers of one cube; returns its slot. For LookUpColor.
uint32_t FillCube(ColorIndex* index, uint32_t cube);

constexpr uint32_t kColorCubes = 1u << 18;
constexpr uint32_t kCubeColors = 64;

// The cube of a colour given in the byte order of picture rows (0x00RRGGBB), and the colour's place in the
// cube.
inline uint32_t CubeOf(uint32_t color) {
    return (color >> 2 & 0x3F) | (color >> 4 & 0xFC0) | (color >> 6 & 0x3F000);
}
inline uint32_t PlaceInCube(uint32_t color) { return (color & 3) | (color >> 6 & 12) | (color >> 12 & 48); }

// The palette entry for a colour (0x00RRGGBB).
inline uint8_t LookUpColor(ColorIndex* index, uint32_t color) {
    const uint32_t cube = CubeOf(color);
    uint32_t slot = index->slots[cube];
    if (!slot) slot = FillCube(index, cube);
    return index->answers[slot * kCubeColors + PlaceInCube(color)];
}

}  // namespace kfx
