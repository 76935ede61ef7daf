// SPDX-License-Identifier: MIT
// The compression of GIF images (Welch, "A technique for high-performance data compression", IEEE Computer
// 17, 1984), for pixels of which some may be stored in more than one way.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace kfx {

// The pixels of an image as they may be stored.
struct LzwPixels {
    std::vector<uint8_t> symbols;  // each below `symbolCount`
    // Where not 0, the pixel may be stored as `transparentSymbol` instead of its own, other one. As long as
    // `symbols`.
    std::vector<uint8_t> open;
    int symbolCount = 0;         // 1 to 256
    int transparentSymbol = -1;  // needed when a pixel is open
    // Whether shorter strings are taken where the one after becomes longer. Mostly smaller, always slower.
    bool looksAhead = true;
    // When not null: symbolCount * symbolCount entries; nears[a * symbolCount + b] is not 0 when a pixel of
    // symbol a may be stored as symbol b.
    const uint8_t* nears = nullptr;
};

// A compressed image as a list: symbols below 256, entry k of the dictionary as kLzwFirstEntry + k, and
// kLzwClear, which empties the dictionary. The list says nothing about the bits of a code, so that the
// symbols can still get other numbers.
constexpr uint16_t kLzwFirstEntry = 256;
constexpr uint16_t kLzwClear = 0xFFFF;
using LzwCodes = std::vector<uint16_t>;

// The least `minimumCodeSize` (2 to 8) for symbols below `symbolCount`.
int LzwCodeSize(int symbolCount);

// What compressing an image works in, 2 MiB at most: it serves any number of images, one after the other.
struct LzwMemory;

struct LzwMemoryDeleter {
    void operator()(LzwMemory* memory) const;
};
using LzwMemoryOwner = std::unique_ptr<LzwMemory, LzwMemoryDeleter>;

LzwMemoryOwner MakeLzwMemory();

// Chooses codes for the pixels that can be written with any minimum code size from that of `symbolCount` up
// to `largestCodeSize`. Each code takes the string that, together with the one after it, covers the most
// pixels (Horspool, "The effect of non-greedy parsing in Ziv-Lempel compression methods", Data Compression
// Conference, 1995); open pixels take whichever symbol makes strings longer. A full dictionary is used until
// a new one promises to be better. When `stored` is not null, it gets the symbol chosen for each pixel.
LzwCodes CompressLzw(LzwMemory* memory, const LzwPixels& pixels, int largestCodeSize,
                     std::vector<uint8_t>* stored);

// The bytes that WriteLzw appends.
size_t LzwSize(const LzwCodes& codes, int minimumCodeSize);

// Appends the image data of a GIF file to `file`: the minimum code size, and the codes in blocks. Symbol s is
// written as indexOfSymbol[s], which must be below 1 << minimumCodeSize.
void WriteLzw(const LzwCodes& codes, int minimumCodeSize, const uint8_t* indexOfSymbol,
              std::vector<uint8_t>* file);

}  // namespace kfx
