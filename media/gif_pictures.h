// SPDX-License-Identifier: MIT
// What a GIF animation shows, picture by picture, with numbers in place of colours.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "media/animation_writer.h"
#include "media/gif_canvas.h"

namespace kfx {

// The number of a colour in the whole animation; the same colour of two palettes has one number.
using ColorNumber = uint32_t;
constexpr ColorNumber kClear = 0;  // a transparent pixel

// Numbers of the canvas' pixels, top row first.
using NumberedPicture = std::vector<ColorNumber>;

struct ColorNumbers {
    std::vector<RgbColor> colors = {RgbColor()};  // by number; the first stands for kClear
    std::unordered_map<uint32_t, ColorNumber> numbers;
};

// The number of a colour, which gets the next one when it has none.
ColorNumber NumberOf(ColorNumbers* numbers, RgbColor color);

// The palette of a frame: its own, or the global one.
const std::vector<RgbColor>& PaletteOf(const GifAnimation& gif, const GifFrame& frame);

// Shows one frame after the other. `gif` and `numbers` must outlive the player.
struct GifPlayer {
    const GifAnimation* gif;
    ColorNumbers* numbers;
    NumberedPicture canvas;
    NumberedPicture before = {};  // a frame that gives the canvas back
    size_t nextFrame = 0;
    const GifFrame* drawn = nullptr;  // the last frame that does not give the canvas back
    bool isDrawnOnClear = false;      // it was drawn on an empty canvas
    bool isShownOnClear = false;      // the last frame was drawn on an empty canvas
    bool isCleared = false;           // the canvas counts as empty, though it still shows `drawn`
    const std::vector<RgbColor>* palette = nullptr;  // of the last frame
    ColorNumber numberOf[256] = {};                  // of its indices
};

GifPlayer MakeGifPlayer(const GifAnimation& gif, ColorNumbers* numbers);

// The picture that the next frame shows, which the player keeps until it is asked for another one.
const NumberedPicture& ShowNextFrame(GifPlayer* player);

// What a viewer shows before a frame is drawn.
struct NumberedCanvas {
    size_t width;
    NumberedPicture pixels;    // empty as long as all are transparent
    NumberedPicture clearRow;  // stands for each row then
};

NumberedCanvas MakeNumberedCanvas(int width);

inline const ColorNumber* RowOf(const NumberedCanvas& canvas, size_t y) {
    return canvas.pixels.empty() ? canvas.clearRow.data() : canvas.pixels.data() + y * canvas.width;
}

// The smallest rectangle around `a` and `b`; one without width does not count.
Rectangle Around(const Rectangle& a, const Rectangle& b);

// The smallest rectangle around all pixels of a canvas for which `counts(pixel)` holds; without width when
// there are none.
template <typename Predicate>
Rectangle BoundsOf(int width, int height, const Predicate& counts) {
    int left = width;
    int right = -1;
    int top = height;
    int bottom = -1;
    size_t pixel = 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x, ++pixel) {
            if (!counts(pixel)) continue;
            left = x < left ? x : left;
            right = x > right ? x : right;
            top = y < top ? y : top;
            bottom = y;
        }
    }
    if (right < 0) return {};
    return {.left = left, .top = top, .width = right - left + 1, .height = bottom - top + 1};
}

// Calls `use(pixel)` for the number of each pixel of `part` on a canvas of this width.
template <typename Use>
void ForEachPixel(int canvasWidth, const Rectangle& part, const Use& use) {
    for (int y = part.top; y < part.top + part.height; ++y) {
        const size_t row = static_cast<size_t>(y) * static_cast<size_t>(canvasWidth);
        for (int x = part.left; x < part.left + part.width; ++x) use(row + static_cast<size_t>(x));
    }
}

// Makes a part of an RGBA picture transparent black.
inline void ClearPart(int canvasWidth, const Rectangle& part, std::vector<uint8_t>* rgba) {
    ForEachPixel(canvasWidth, part,
                 [rgba](size_t pixel) { std::fill_n(rgba->data() + 4 * pixel, 4, uint8_t{0}); });
}

}  // namespace kfx
