// SPDX-License-Identifier: MIT
// The canvas on which a viewer of GIF animations draws one frame after the other.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "media/animation.h"

namespace kfx {

struct Rectangle {
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
};

// Pixel colours of a frame; indices beyond the stored palette show black.
struct FrameColors {
    RgbColor colors[256];
    int16_t globalIndices[256];  // the global palette's entry of the same colour, or kOffPalette
    int transparentIndex = -1;
};

constexpr int16_t kOffPalette = -1;

struct GifCanvas {
    int width = 0;
    int height = 0;
    std::vector<uint8_t> pixels;         // RGBA, top row first
    std::vector<int16_t> globalIndices;  // of each pixel, kOffPalette where transparent
};

// A fully transparent canvas: viewers show what is behind the picture, not the file's background colour.
GifCanvas MakeGifCanvas(int width, int height);

// The colours of a frame with `palette`, whose pixels are looked up in `globalPalette` (may be empty). When
// the two are the same object, each entry is its own global index, also where colours stand twice.
FrameColors MakeFrameColors(const std::vector<RgbColor>& palette, const std::vector<RgbColor>& globalPalette,
                            int transparentIndex);

// Draws `count` indices from (left, top) to the right, cut at the canvas' border; `left` and `top` are not
// negative.
void DrawGifRow(GifCanvas* canvas, int left, int top, const uint8_t* indices, int count,
                const FrameColors& colors);

// What happens to the canvas after a frame's time; `before` is the canvas before the frame was drawn; its
// content is moved away when the disposal is kDisposalPrevious.
void DisposeGifFrame(GifCanvas* canvas, const Rectangle& frame, int disposal, GifCanvas* before);

// Whether DisposeGifFrame needs the canvas before the frame.
bool RestoresCanvas(int disposal);

}  // namespace kfx
