// SPDX-License-Identifier: MIT
#include "builder/quantizer.h"

#include <cstring>
#include <iterator>

#include "builder/color_cells.h"
#include "builder/color_cube.h"

namespace kfx {
namespace {

constexpr uint32_t kMostColors = 256;

constexpr uint32_t kPlaces = 1024;
// With so few colours in the table nearly every one is found within this many steps. When one is not, they
// are colours that this way of spreading puts together: another way is taken, as often as there is one left.
constexpr uint32_t kLongestSearch = 16;
constexpr uint32_t kSpreads[] = {
    0x9E3779B1,  // 2^32 over the golden ratio
    0x85EBCA77, 0xC2B2AE3D, 0x27D4EB2F, 0x165667B1, 0x2C1B3C6D, 0x297A2D39, 0xD3A2646D,  // other odd numbers
};

// The different colours in order of first appearance, up to 256 of them.
struct ColorList {
    uint32_t count = 0;
    // There were pixels after the 256th colour was found: they count as further colours without a look at
    // them.
    bool more = false;
    uint8_t colors[kPaletteBytes] = {};  // red, green, blue
    uint32_t places[kPlaces] = {};       // hash table of colours plus one; 0: free
    uint32_t spread = 0;                 // which of kSpreads
};

// The place of a colour, or the free place for it. `*steps` is how many places were looked at.
uint32_t FindPlace(const ColorList& list, uint32_t color, uint32_t* steps) {
    uint32_t place = color * kSpreads[list.spread] >> 22;
    for (*steps = 1; list.places[place] && list.places[place] != color + 1; ++*steps)
        place = (place + 1) % kPlaces;
    return place;
}

// Puts all colours into their places again, in the next way of spreading them.
void SpreadAnew(ColorList* list) {
    ++list->spread;
    std::memset(list->places, 0, sizeof list->places);
    const uint8_t* entry = list->colors;
    for (uint32_t i = 0; i < list->count; ++i, entry += 3) {
        const uint32_t color = Rgb(entry[0], entry[1], entry[2]);
        uint32_t steps;
        list->places[FindPlace(*list, color, &steps)] = color + 1;
    }
}

void AddColor(ColorList* list, uint32_t color) {
    uint32_t steps;
    const uint32_t place = FindPlace(*list, color, &steps);
    if (!list->places[place]) {
        list->places[place] = color + 1;
        uint8_t* entry = list->colors + 3 * list->count++;
        entry[0] = static_cast<uint8_t>(RedOf(color));
        entry[1] = static_cast<uint8_t>(GreenOf(color));
        entry[2] = static_cast<uint8_t>(BlueOf(color));
    }
    if (steps > kLongestSearch && list->spread + 1 < std::size(kSpreads)) SpreadAnew(list);
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
