// SPDX-License-Identifier: MIT
#include "builder/reserved_index.h"

#include <algorithm>

namespace kfx {
namespace {

constexpr uint32_t kColorMask = 0xFFFFFF;

bool IsSet(const uint8_t* bits, int32_t x) { return (bits[x >> 3] << (x & 7) & 128) != 0; }

// The index where the row's bits are set; eight bytes of pixels at a time where nothing, or everything, is.
void MarkRow8(const uint8_t* bits, int32_t width, uint8_t* row, uint8_t index) {
    int32_t x = 0;
    for (; x + 8 <= width; x += 8) {
        const uint8_t eight = bits[x >> 3];
        if (eight == 0xFF)
            std::fill(row + x, row + x + 8, index);
        else if (eight)
            for (int32_t i = 0; i < 8; ++i) row[x + i] = IsSet(bits, x + i) ? index : row[x + i];
    }
    for (; x < width; ++x)
        if (IsSet(bits, x)) row[x] = index;
}

}  // namespace

bool MarkBackground(ImageHandle full, uint32_t background, ImageHandle converted, int32_t index) {
    const ImageLock from(full);
    const ImageLock to(converted);
    if (!from || !to) return false;
    for (int32_t y = 0; y < to->height; ++y)
        for (int32_t x = 0; x < to->width; ++x)
            if (((GetDibPixel(from.image, x, y) ^ background) & kColorMask) == 0)
                SetDibPixel(to.image, x, y, static_cast<uint32_t>(index));
    return true;
}

bool MarkUnchanged(ImageHandle mask, ImageHandle converted, int32_t index) {
    const ImageLock unchanged(mask);
    const ImageLock to(converted);
    if (!unchanged || !to) return false;
    const int32_t width = std::min(unchanged->width, to->width);
    const int32_t height = std::min(unchanged->height, to->height);
    for (int32_t y = 0; y < height; ++y) {
        const uint8_t* bits = PictureRow(unchanged.image, y);
        if (to->bitCount == 8) {
            MarkRow8(bits, width, PictureRow(to.image, y), static_cast<uint8_t>(index));
            continue;
        }
        for (int32_t x = 0; x < width; ++x)
            if (IsSet(bits, x)) SetDibPixel(to.image, x, y, static_cast<uint32_t>(index));
    }
    return true;
}

}  // namespace kfx
