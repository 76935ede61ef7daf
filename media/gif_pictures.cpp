// SPDX-License-Identifier: MIT
#include "media/gif_pictures.h"

#include <algorithm>

namespace kfx {

ColorNumber NumberOf(ColorNumbers* numbers, RgbColor color) {
    const auto packed = static_cast<uint32_t>(color.red << 16 | color.green << 8 | color.blue);
    const auto [place, added] =
        numbers->numbers.emplace(packed, static_cast<ColorNumber>(numbers->colors.size()));
    if (added) numbers->colors.push_back(color);
    return place->second;
}

const std::vector<RgbColor>& PaletteOf(const GifAnimation& gif, const GifFrame& frame) {
    return frame.palette.empty() ? gif.globalPalette : frame.palette;
}

GifPlayer MakeGifPlayer(const GifAnimation& gif, ColorNumbers* numbers) {
    const size_t area = static_cast<size_t>(gif.width) * static_cast<size_t>(gif.height);
    return {.gif = &gif, .numbers = numbers, .canvas = NumberedPicture(area, kClear), .before = {}};
}

void ShowNextFrame(GifPlayer* player, NumberedPicture* picture) {
    const GifFrame& frame = player->gif->frames[player->nextFrame++];
    ColorNumber numbers[256] = {};
    const std::vector<RgbColor>& palette = PaletteOf(*player->gif, frame);
    for (size_t i = 0; i < palette.size(); ++i) numbers[i] = NumberOf(player->numbers, palette[i]);
    if (RestoresCanvas(frame.disposal)) player->before = player->canvas;
    NumberedPicture& canvas = player->canvas;
    const uint8_t* indices = frame.indices.data();
    if (frame.transparentIndex < 0) {
        for (size_t i = 0; i < canvas.size(); ++i) canvas[i] = numbers[indices[i]];
    } else {
        for (size_t i = 0; i < canvas.size(); ++i)
            canvas[i] = indices[i] == frame.transparentIndex ? canvas[i] : numbers[indices[i]];
    }
    *picture = canvas;
    if (RestoresCanvas(frame.disposal))
        canvas.swap(player->before);
    else if (frame.disposal == kDisposalBackground)
        std::fill(canvas.begin(), canvas.end(), kClear);
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
