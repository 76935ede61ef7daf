// SPDX-License-Identifier: MIT
// The canvas on which a viewer of GIF animations draws one frame after the other. Its colours are not stored
// a second time: between two frames they are those of an earlier frame, except for a part that was cleared.
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

// The pixels of a part.
inline size_t AreaOf(const Rectangle& part) {
    return static_cast<size_t>(part.width) * static_cast<size_t>(part.height);
}

constexpr int16_t kOffPalette = -1;

// The first entry of the colour; kOffPalette when there is none.
int16_t FindPaletteEntry(const std::vector<RgbColor>& palette, RgbColor color);

// The pixels of a frame by their index; indices beyond the stored palette show black.
struct FrameColors {
    uint8_t pixels[256][4];      // red, green, blue, alpha
    int16_t globalIndices[256];  // the global palette's entry of the same colour, or kOffPalette
    int transparentIndex = -1;
};

constexpr size_t kEmptyCanvas = SIZE_MAX;

struct GifCanvas {
    int width = 0;
    int height = 0;
    size_t shown = kEmptyCanvas;  // the frame whose picture is on the canvas; at first all is transparent
    Rectangle cleared;            // the part of it that became transparent again
    // Of each pixel its entry in the global palette, kOffPalette where there is none; empty when the file has
    // no global palette.
    std::vector<int16_t> globalIndices;
};

// A fully transparent canvas: viewers show what is behind the picture, not the file's background colour.
GifCanvas MakeGifCanvas(int width, int height, bool hasGlobalPalette);

// The colours of a frame with `palette`, whose pixels are looked up in `globalPalette` (may be empty). When
// the two are the same object, each entry is its own global index, also where colours stand twice.
FrameColors MakeFrameColors(const std::vector<RgbColor>& palette, const std::vector<RgbColor>& globalPalette,
                            int transparentIndex);

// What is on the canvas, as RGBA; `frames` are those that were shown so far.
std::vector<uint8_t> CopyGifCanvas(const GifCanvas& canvas, const std::vector<Frame>& frames);

// Draws `count` indices from (left, top) to the right, cut at the canvas' border: colours into `picture`,
// which has the canvas' size, and global indices onto the canvas. `left` and `top` are not negative.
void DrawGifRow(GifCanvas* canvas, uint8_t* picture, int left, int top, const uint8_t* indices, int count,
                const FrameColors& colors);

// Completes a frame whose pixels are drawn: `transparent`, `indexed` and `indices`.
void FinishGifFrame(const GifCanvas& canvas, const std::vector<Frame>& frames, Frame* frame);

// The global indices of a part of the canvas, to be given to DisposeGifFrame. Empty when there are none.
std::vector<int16_t> SaveGlobalIndices(const GifCanvas& canvas, const Rectangle& part);

// What happens to the canvas after the time of frame number `frame`, which was drawn at `place`. `before` are
// the global indices that were there before; they are only used when RestoresCanvas(disposal).
void DisposeGifFrame(GifCanvas* canvas, size_t frame, const Rectangle& place, int disposal,
                     const std::vector<int16_t>& before);

// Whether the canvas becomes what it was before the frame.
bool RestoresCanvas(int disposal);

}  // namespace kfx
