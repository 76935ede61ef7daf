// SPDX-License-Identifier: MIT
#include "media/gif_canvas.h"

#include <algorithm>
#include <cstring>

#include "media/readers.h"

namespace kfx {
namespace {

// The part that lies on the canvas.
Rectangle OnCanvas(const GifCanvas& canvas, const Rectangle& part) {
    const int right = std::min(part.left + part.width, canvas.width);
    const int bottom = std::min(part.top + part.height, canvas.height);
    return {.left = part.left,
            .top = part.top,
            .width = std::max(right - part.left, 0),
            .height = std::max(bottom - part.top, 0)};
}

// Calls `use` with the number of the first pixel of each of the part's rows; the part lies on the canvas.
template <typename Use>
void ForEachRow(const GifCanvas& canvas, const Rectangle& part, const Use& use) {
    if (part.width == 0) return;
    for (int y = part.top; y < part.top + part.height; ++y)
        use(static_cast<size_t>(y) * static_cast<size_t>(canvas.width) + static_cast<size_t>(part.left));
}

// `globalIndices` is null when there are none.
void DrawPixels(const uint8_t* indices, int count, const FrameColors& colors, uint8_t* pixel,
                int16_t* globalIndices) {
    const int transparent = colors.transparentIndex;
    // Most transparent pixels stand side by side.
    uint8_t group[8];
    std::fill(std::begin(group), std::end(group), static_cast<uint8_t>(transparent));
    constexpr int kGroup = sizeof group;
    for (int x = 0; x < count; ++x) {
        const uint8_t index = indices[x];
        if (index == transparent) {
            if (count - x >= kGroup && std::memcmp(indices + x, group, kGroup) == 0) x += kGroup - 1;
            continue;
        }
        std::memcpy(pixel + 4 * x, colors.pixels[index], 4);
        if (globalIndices) globalIndices[x] = colors.globalIndices[index];
    }
}

}  // namespace

int16_t FindPaletteEntry(const std::vector<RgbColor>& palette, RgbColor color) {
    const auto found = std::find(palette.begin(), palette.end(), color);
    return found == palette.end() ? kOffPalette : static_cast<int16_t>(found - palette.begin());
}

GifCanvas MakeGifCanvas(int width, int height, bool hasGlobalPalette) {
    GifCanvas canvas;
    canvas.width = width;
    canvas.height = height;
    if (hasGlobalPalette)
        canvas.globalIndices.assign(static_cast<size_t>(width) * static_cast<size_t>(height), kOffPalette);
    return canvas;
}

FrameColors MakeFrameColors(const std::vector<RgbColor>& palette, const std::vector<RgbColor>& globalPalette,
                            int transparentIndex) {
    FrameColors result;
    result.transparentIndex = transparentIndex;
    const bool isGlobal = &palette == &globalPalette;
    const int16_t black = FindPaletteEntry(globalPalette, RgbColor());
    for (size_t i = 0; i < 256; ++i) {
        const bool stored = i < palette.size();
        const RgbColor color = stored ? palette[i] : RgbColor();
        const uint8_t pixel[] = {color.red, color.green, color.blue, 255};
        std::memcpy(result.pixels[i], pixel, 4);
        if (!stored)
            result.globalIndices[i] = black;
        else
            result.globalIndices[i] =
                isGlobal ? static_cast<int16_t>(i) : FindPaletteEntry(globalPalette, color);
    }
    return result;
}

std::vector<uint8_t> CopyGifCanvas(const GifCanvas& canvas, const std::vector<Frame>& frames) {
    if (canvas.shown == kEmptyCanvas) {
        const size_t area = static_cast<size_t>(canvas.width) * static_cast<size_t>(canvas.height);
        return std::vector<uint8_t>(4 * area);
    }
    std::vector<uint8_t> picture = frames[canvas.shown].pixels;
    ForEachRow(canvas, canvas.cleared, [&](size_t first) {
        std::fill_n(picture.data() + 4 * first, 4 * static_cast<size_t>(canvas.cleared.width), uint8_t{0});
    });
    return picture;
}

void DrawGifRow(GifCanvas* canvas, uint8_t* picture, int left, int top, const uint8_t* indices, int count,
                const FrameColors& colors) {
    if (top >= canvas->height || left >= canvas->width) return;
    const int visible = std::min(count, canvas->width - left);
    const size_t start =
        static_cast<size_t>(top) * static_cast<size_t>(canvas->width) + static_cast<size_t>(left);
    int16_t* globalIndices = canvas->globalIndices.empty() ? nullptr : canvas->globalIndices.data() + start;
    DrawPixels(indices, visible, colors, picture + 4 * start, globalIndices);
}

void FinishGifFrame(const GifCanvas& canvas, const std::vector<Frame>& frames, Frame* frame) {
    // Drawing makes nothing transparent.
    const bool wasOpaque = canvas.shown != kEmptyCanvas && !frames[canvas.shown].transparent &&
                           (canvas.cleared.width == 0 || canvas.cleared.height == 0);
    if (!wasOpaque) NoteTransparency(frame);
    const std::vector<int16_t>& indices = canvas.globalIndices;
    if (indices.empty() || frame->transparent) return;
    int16_t allBits = 0;  // only kOffPalette is negative
    for (const int16_t index : indices) allBits |= index;
    frame->indexed = allBits >= 0;
    if (!frame->indexed) return;
    frame->indices.resize(indices.size());
    std::transform(indices.begin(), indices.end(), frame->indices.begin(),
                   [](int16_t index) { return static_cast<uint8_t>(index); });
}

std::vector<int16_t> SaveGlobalIndices(const GifCanvas& canvas, const Rectangle& part) {
    const Rectangle visible = OnCanvas(canvas, part);
    std::vector<int16_t> saved;
    if (canvas.globalIndices.empty()) return saved;
    saved.reserve(static_cast<size_t>(visible.width) * static_cast<size_t>(visible.height));
    ForEachRow(canvas, visible, [&](size_t first) {
        const int16_t* row = canvas.globalIndices.data() + first;
        saved.insert(saved.end(), row, row + visible.width);
    });
    return saved;
}

bool RestoresCanvas(int disposal) {
    // Some writers store "previous" as 4, as an early draft of the format had it; viewers follow them.
    return disposal == kDisposalPrevious || disposal == 4;
}

void DisposeGifFrame(GifCanvas* canvas, size_t frame, const Rectangle& place, int disposal,
                     const std::vector<int16_t>& before) {
    const Rectangle visible = OnCanvas(*canvas, place);
    const auto width = static_cast<size_t>(visible.width);
    const bool restores = RestoresCanvas(disposal);
    const bool clears = disposal == kDisposalBackground;
    if (!restores) {
        canvas->shown = frame;
        canvas->cleared = clears ? visible : Rectangle();
    }
    if (canvas->globalIndices.empty() || !(restores || clears)) return;
    const int16_t* saved = before.data();
    ForEachRow(*canvas, visible, [&](size_t first) {
        int16_t* row = canvas->globalIndices.data() + first;
        if (clears) {
            std::fill_n(row, width, kOffPalette);
        } else {
            std::copy_n(saved, width, row);
            saved += width;
        }
    });
}

}  // namespace kfx
