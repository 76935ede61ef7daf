// SPDX-License-Identifier: MIT
#include "media/gif_pictures.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace kfx {

namespace {

void DisposeOfLast(GifPlayer* player) {
    const GifFrame& frame = player->gif->frames[player->nextFrame - 1];
    if (RestoresCanvas(frame.disposal)) {
        player->canvas.swap(player->before);
    } else {
        player->drawn = &frame;
        player->isDrawnOnClear = player->isShownOnClear;
        player->isCleared = frame.disposal == kDisposalBackground;
    }
}

// Draws a row but for its transparent pixels, of which most stand side by side.
void DrawOver(const uint8_t* indices, size_t width, int transparent, const ColorNumber* numberOf,
              ColorNumber* canvas) {
    uint8_t group[8];
    std::fill(std::begin(group), std::end(group), static_cast<uint8_t>(transparent));
    for (size_t x = 0; x < width; ++x) {
        if (width - x >= sizeof group && std::memcmp(indices + x, group, sizeof group) == 0)
            x += sizeof group - 1;
        else if (indices[x] != transparent)
            canvas[x] = numberOf[indices[x]];
    }
}

// Draws the frame on the canvas, or on a cleared one. A row that the frame before drew in the same way stays.
void DrawRows(const GifFrame& frame, const std::vector<RgbColor>& palette, bool isCleared,
              GifPlayer* player) {
    const GifFrame* const drawn = player->drawn;
    const bool mayRepeat = drawn && drawn->transparentIndex == frame.transparentIndex &&
                           PaletteOf(*player->gif, *drawn) == palette &&
                           (!isCleared || player->isDrawnOnClear);
    const auto width = static_cast<size_t>(player->gif->width);
    ColorNumber numberOf[256];
    std::copy(std::begin(player->numberOf), std::end(player->numberOf), numberOf);
    const bool hasTransparent = frame.transparentIndex >= 0 && frame.transparentIndex < 256;
    if (hasTransparent) numberOf[frame.transparentIndex] = kClear;
    for (size_t row = 0; row < player->canvas.size(); row += width) {
        const uint8_t* const indices = frame.indices.data() + row;
        if (mayRepeat && std::memcmp(indices, drawn->indices.data() + row, width) == 0) continue;
        ColorNumber* const canvas = player->canvas.data() + row;
        if (isCleared || !hasTransparent)
            for (size_t x = 0; x < width; ++x) canvas[x] = numberOf[indices[x]];
        else
            DrawOver(indices, width, frame.transparentIndex, numberOf, canvas);
    }
}

}  // namespace

ColorNumber NumberOf(ColorNumbers* numbers, RgbColor color) {
    const auto packed = static_cast<uint32_t>(color.red << 16 | color.green << 8 | color.blue);
    const auto [place, added] =
        numbers->numbers.try_emplace(packed, static_cast<ColorNumber>(numbers->colors.size()));
    if (added) numbers->colors.push_back(color);
    return place->second;
}

const std::vector<RgbColor>& PaletteOf(const GifAnimation& gif, const GifFrame& frame) {
    return frame.palette.empty() ? gif.globalPalette : frame.palette;
}

GifPlayer MakeGifPlayer(const GifAnimation& gif, ColorNumbers* numbers) {
    const size_t area = static_cast<size_t>(gif.width) * static_cast<size_t>(gif.height);
    return {.gif = &gif, .numbers = numbers, .canvas = NumberedPicture(area, kClear)};
}

const NumberedPicture& ShowNextFrame(GifPlayer* player) {
    const GifAnimation& gif = *player->gif;
    player->isShownOnClear = player->nextFrame == 0;
    if (player->nextFrame > 0) DisposeOfLast(player);
    const GifFrame& frame = gif.frames[player->nextFrame++];
    const std::vector<RgbColor>& palette = PaletteOf(gif, frame);
    const bool hasOtherColors =
        !player->palette || (player->palette != &palette && *player->palette != palette);
    player->palette = &palette;
    for (size_t i = 0; i < palette.size() && hasOtherColors; ++i)
        player->numberOf[i] = NumberOf(player->numbers, palette[i]);
    if (RestoresCanvas(frame.disposal) && player->nextFrame < gif.frames.size()) {
        if (std::exchange(player->isCleared, false)) {
            std::fill(player->canvas.begin(), player->canvas.end(), kClear);
            player->drawn = nullptr;
            player->isShownOnClear = true;
        }
        player->before = player->canvas;
    }
    const bool isCleared = std::exchange(player->isCleared, false);
    player->isShownOnClear |= isCleared;
    DrawRows(frame, palette, isCleared, player);
    return player->canvas;
}

NumberedCanvas MakeNumberedCanvas(int width) {
    const auto columns = static_cast<size_t>(width);
    return {.width = columns, .pixels = {}, .clearRow = NumberedPicture(columns, kClear)};
}

Rectangle Around(const Rectangle& a, const Rectangle& b) {
    if (a.width == 0) return b;
    if (b.width == 0) return a;
    const int left = std::min(a.left, b.left);
    const int top = std::min(a.top, b.top);
    return {.left = left,
            .top = top,
            .width = std::max(a.left + a.width, b.left + b.width) - left,
            .height = std::max(a.top + a.height, b.top + b.height) - top};
}

}  // namespace kfx
