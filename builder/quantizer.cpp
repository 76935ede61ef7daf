// SPDX-License-Identifier: MIT
#include "builder/quantizer.h"

#include <cstring>

#include "builder/color_cells.h"
#include "builder/color_cube.h"

namespace kfx {
namespace {

constexpr uint32_t kMostColors = 256;

// The different colours in order of first appearance, up to 256 of them.
struct ColorList {
    uint32_t count = 0;
    // There were pixels after the 256th colour was found: they count as further colours without a look at
    // them.
    bool more = false;
    uint8_t colors[kPaletteBytes] = {};  // red, green, blue
    uint32_t places[1024] = {};          // hash table of colours plus one; 0: free
};

void AddColor(ColorList* list, uint32_t color) {
    constexpr uint32_t kSpread = 0x9E3779B1u;  // 2^32 over the golden ratio
    uint32_t place = color * kSpread >> 22;
    for (; list->places[place]; place = (place + 1) % 1024)
        if (list->places[place] == color + 1) return;
    list->places[place] = color + 1;
    uint8_t* entry = list->colors + 3 * list->count++;
    entry[0] = static_cast<uint8_t>(RedOf(color));
    entry[1] = static_cast<uint8_t>(GreenOf(color));
    entry[2] = static_cast<uint8_t>(BlueOf(color));
}

void ListColorsOfRow(ColorList* list, const uint8_t* row, int32_t width) {
    uint32_t last = kNoPixel;
    for (int32_t x = 0; x < width; ++x, row += 3) {
        if (list->count == kMostColors) {
            list->more = true;
            return;
        }
        const uint32_t color = Rgb(row[2], row[1], row[0]);
        if (color != last) AddColor(list, color);
        last = color;
    }
}

// Calls `useRow` for the rows of each frame, top to bottom, until it answers false.
template <typename UseRow>
bool ForEachRow(const FrameList& frames, UseRow useRow) {
    for (int32_t i = 0; i < frames.count; ++i) {
        FrameEntry entry;
        if (!GetFrame(frames, i, &entry)) return false;
        const ImageLock lock(entry.image);
        if (!lock || lock->bitCount != 24) return false;
        for (int32_t y = 0; y < lock->height; ++y)
            if (!useRow(PictureRow(lock.image, y), lock->width)) return true;
    }
    return true;
}

bool ListColors(const FrameList& frames, ColorList* list) {
    return ForEachRow(frames, [list](const uint8_t* row, int32_t width) {
        ListColorsOfRow(list, row, width);
        return !list->more;
    });
}

bool FillCube(const FrameList& frames, ColorCube* cube) {
    ColorCells cells;
    if (!cells.cells.address) return false;
    const bool read = ForEachRow(frames, [&](const uint8_t* row, int32_t width) {
        AddPixels(&cells, row, width, cube);
        return true;
    });
    EmptyCells(&cells, cube);
    return read;
}

}  // namespace

bool Quantize(uint32_t* colors, uint8_t* palette, const FrameList& frames) {
    const uint32_t limit = *colors == 0 || *colors > kMostColors ? kMostColors : *colors;
    if (!frames.entries) return false;
    ColorList list;
    if (!ListColors(frames, &list)) return false;
    if (list.count <= limit && !list.more) {
        std::memcpy(palette, list.colors, kPaletteBytes);
        *colors = list.count;
        return true;
    }
    ColorCube cube(CubeDepthFor(limit));
    if (!cube.nodes.address || !FillCube(frames, &cube)) return false;
    SumUpCube(&cube);
    if (!ReduceCube(&cube, limit)) return false;
    std::memset(palette, 0, kPaletteBytes);
    *colors = AssignPalette(cube, palette);
    return true;
}

}  // namespace kfx
