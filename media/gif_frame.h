// SPDX-License-Identifier: MIT
// Compressing the frames of a planned GIF file.
#pragma once

#include <vector>

#include "media/gif_plan.h"
#include "media/lzw.h"

namespace kfx {

// Which colours the file's palette has, by number.
struct GlobalColors {
    std::vector<ColorNumber> colors;  // at most 256
    std::vector<uint8_t> contains;    // by colour number
    int codeSize = 8;                 // the largest minimum code size of frames with these colours
};

// A frame as it is stored, but for the indices of its colours.
struct CompressedFrame {
    Rectangle part;
    int disposal = kDisposalKeep;
    LzwCodes codes;
    // The colour of each symbol, kClear for the transparent one; kUnused where no pixel has the symbol.
    std::vector<ColorNumber> colors;
    bool isLocal = false;  // needs a palette of its own
};

constexpr ColorNumber kUnused = UINT32_MAX;

// Bytes of a palette with so many colours in the file, where their number is a power of two.
size_t PaletteBytes(size_t colors);

// What compressing frames works in: one serves any number of frames, one after the other.
struct GifFrameMemory {
    LzwMemoryOwner lzw = MakeLzwMemory();
    // By colour number; only those of the frame hold anything.
    std::vector<uint8_t> changed;
    std::vector<uint8_t> shown;
    std::vector<uint8_t> open;
};

// Compresses a frame in the smallest of several ways. `canvas` is what the viewer shows before it; `picture`
// is what it has to show. With `lossy` above 0, *shown becomes what it shows instead; see GifOptions.
CompressedFrame CompressFrame(const FramePlan& plan, const ColorNumbers& numbers, const GlobalColors& global,
                              const NumberedCanvas& canvas, const NumberedPicture& picture, int lossy,
                              NumberedPicture* shown, GifFrameMemory* memory);

}  // namespace kfx
