// SPDX-License-Identifier: MIT
// Which colours pictures have, and in which formats of PNG files they can be stored.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "media/png_format.h"

namespace kfx {

// Red, green, blue and alpha, red in the lowest byte.
using PackedColor = uint32_t;

constexpr PackedColor kNoColor = 0;  // fully transparent, black beneath

PackedColor PackedColorAt(const uint8_t* rgba);
inline uint32_t AlphaOf(PackedColor color) { return color >> 24; }

// A number for each of up to 256 colours, in the order in which they came.
struct ColorNumbering {
    static constexpr size_t kSlots = 1024;
    std::vector<PackedColor> colors;
    uint16_t slots[kSlots] = {};  // a colour's number + 1, at its hash or behind it; 0: free
};

constexpr int kNoNumber = -1;

// The colour's number, or kNoNumber.
int NumberOfColor(const ColorNumbering& numbering, PackedColor color);

// Gives the colour a number when it has none; false when 256 others have.
bool AddColor(PackedColor color, ColorNumbering* numbering);

// What is known of pictures after CountColors for each of them.
struct ColorCensus {
    ColorNumbering numbering;
    bool isFew = true;   // at most 256 colours, all in the numbering
    bool isGrey = true;  // red, green and blue are the same everywhere
    bool isOpaque = true;
    bool isSolid = true;  // no alpha but 0 and 255
};

void CountColors(const uint8_t* rgba, size_t pixels, ColorCensus* census);

struct PngFormatOptions {
    bool mayBeGrey = true;
    bool mayBeNarrow = true;  // samples of fewer than 8 bits
    // Grey and RGB then have this key instead of alpha: transparent pixels get its colour.
    bool hasKey = false;
    PackedColor key = kNoColor;
};

// Formats that can hold all pixels of the census, each of which may be the smallest.
std::vector<PngFormat> PngFormatsFor(const ColorCensus& census, const PngFormatOptions& options);

// The bytes that palette and transparency take in the file.
size_t PngPaletteBytes(const PngFormat& format);

// A picture in a format, ready to be filtered.
struct PngRows {
    std::vector<uint8_t> bytes;  // of all rows
    size_t rowBytes = 0;
    int step = 1;  // see PngFilterStep
};

PngRows MakePngRows(const PngFormat& format, const uint8_t* rgba, int width, int height);

}  // namespace kfx
