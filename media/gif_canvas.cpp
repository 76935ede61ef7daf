// SPDX-License-Identifier: MIT
#include "media/gif_canvas.h"

#include <algorithm>

namespace kfx {
namespace {

int16_t FindColor(const std::vector<RgbColor>& palette, RgbColor color) {
    const auto found = std::find(palette.begin(), palette.end(), color);
    return found == palette.end() ? kOffPalette : static_cast<int16_t>(found - palette.begin());
}

}  // namespace

GifCanvas MakeGifCanvas(int width, int height) {
    GifCanvas canvas;
    canvas.width = width;
    canvas.height = height;
    const size_t area = static_cast<size_t>(width) * static_cast<size_t>(height);
    canvas.pixels.assign(4 * area, 0);
    canvas.globalIndices.assign(area, kOffPalette);
    return canvas;
}

FrameColors MakeFrameColors(const std::vector<RgbColor>& palette, const std::vector<RgbColor>& globalPalette,
                            int transparentIndex) {
    FrameColors result;
    result.transparentIndex = transparentIndex;
    const bool isGlobal = &palette == &globalPalette;
    for (size_t i = 0; i < 256; ++i) {
        const bool stored = i < palette.size();
        result.colors[i] = stored ? palette[i] : RgbColor();
        result.globalIndices[i] =
            isGlobal && stored ? static_cast<int16_t>(i) : FindColor(globalPalette, result.colors[i]);
    }
    return result;
}

void DrawGifRow(GifCanvas* canvas, int left, int top, const uint8_t* indices, int count,
                const FrameColors& colors) {
    if (top >= canvas->height || left >= canvas->width) return;
    const int visible = std::min(count, canvas->width - left);
    const size_t start =
        static_cast<size_t>(top) * static_cast<size_t>(canvas->width) + static_cast<size_t>(left);
    uint8_t* pixel = canvas->pixels.data() + 4 * start;
    int16_t* globalIndex = canvas->globalIndices.data() + start;
    for (int x = 0; x < visible; ++x, pixel += 4, ++globalIndex) {
        const uint8_t index = indices[x];
        if (index == colors.transparentIndex) continue;
        const RgbColor color = colors.colors[index];
        pixel[0] = color.red;
        pixel[1] = color.green;
        pixel[2] = color.blue;
        pixel[3] = 255;
        *globalIndex = colors.globalIndices[index];
    }
}

bool RestoresCanvas(int disposal) {
    // Some writers store "previous" as 4, as an early draft of the format had it; viewers follow them.
    return disposal == kDisposalPrevious || disposal == 4;
}

void DisposeGifFrame(GifCanvas* canvas, const Rectangle& frame, int disposal, GifCanvas* before) {
    if (RestoresCanvas(disposal)) {
        std::swap(*canvas, *before);
        return;
    }
    if (disposal != kDisposalBackground) return;
    const int right = std::min(frame.left + frame.width, canvas->width);
    const int bottom = std::min(frame.top + frame.height, canvas->height);
    for (int y = frame.top; y < bottom && frame.left < right; ++y) {
        const auto row = static_cast<ptrdiff_t>(y) * canvas->width;
        std::fill(canvas->pixels.begin() + 4 * (row + frame.left), canvas->pixels.begin() + 4 * (row + right),
                  uint8_t{0});
        std::fill(canvas->globalIndices.begin() + row + frame.left,
                  canvas->globalIndices.begin() + row + right, kOffPalette);
    }
}

}  // namespace kfx
