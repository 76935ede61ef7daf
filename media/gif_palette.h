// SPDX-License-Identifier: MIT
// The palettes of a GIF file: which colours its frames share, and in which order.
#pragma once

#include <vector>

#include "media/gif_frame.h"

namespace kfx {

// The colours that the frames share: all of them, or those of as many frames as possible in their order, the
// first one's among them.
GlobalColors ChooseGlobalColors(const GifAnimation& gif, const GifPlan& plan);

// The order of a palette.
struct PaletteOrder {
    std::vector<ColorNumber> colors;  // by index; kUnused where the palette has an entry that nothing needs
    std::vector<uint8_t> indices;     // by colour number
};

PaletteOrder OrderOf(const std::vector<ColorNumber>& colors, size_t numberCount);

// A frame's indices with a palette of some order.
struct FrameIndices {
    uint8_t indexOfSymbol[256] = {};
    int transparentIndex = -1;
    int highest = 0;
};

// The symbols' indices. The transparent one takes the lowest index that the frame has no other use for, which
// can be the one behind the palette's end. A frame that is cleared has one although no pixel is transparent,
// as long as an index is free: without it Pillow, ffmpeg and gifsicle clear to the background colour.
FrameIndices IndicesOf(const CompressedFrame& frame, const std::vector<uint8_t>& indexOfColor);

// What a file is made of.
struct GifParts {
    const GifAnimation* gif;
    ColorNumbers numbers;
    std::vector<CompressedFrame> frames;
};

// The order of the global palette with which the file is smallest: that of the animation's own one, or the
// colours of many frames first, so that frames of few colours have small indices.
PaletteOrder ChooseOrder(const GifParts& parts);

}  // namespace kfx
