// SPDX-License-Identifier: MIT
// Colours of video frames: a brightness and two colour differences, by the matrix of ITU-R BT.601. In the
// limited range brightness goes from 16 to 235 and differences from 16 to 240; in the full range all go from
// 0 to 255.
#pragma once

#include <algorithm>
#include <cstdint>

#include "media/animation.h"

namespace kfx {

struct YuvColor {
    uint8_t y = 0;
    uint8_t cb = 128;
    uint8_t cr = 128;
};

// How one range is turned into red, green and blue, in 1/65536.
struct YuvRange {
    int black;  // the brightness of black
    int brightness;
    int redFromCr;
    int greenFromCb;
    int greenFromCr;
    int blueFromCb;
};

constexpr YuvRange kLimitedRange = {
    .black = 16,
    .brightness = 76309,    // 255 / 219
    .redFromCr = 104597,    // 2 * 0.701 * 255 / 224
    .greenFromCb = -25675,  // -2 * 0.886 * 0.114 / 0.587 * 255 / 224
    .greenFromCr = -53279,  // -2 * 0.701 * 0.299 / 0.587 * 255 / 224
    .blueFromCb = 132201,   // 2 * 0.886 * 255 / 224
};

constexpr YuvRange kFullRange = {
    .black = 0,
    .brightness = 65536,
    .redFromCr = 91881,
    .greenFromCb = -22553,
    .greenFromCr = -46802,
    .blueFromCb = 116130,
};

inline uint8_t ByteOfFixed(int value) {
    return static_cast<uint8_t>(std::clamp((value + 32768) >> 16, 0, 255));
}

inline RgbColor RgbOf(YuvColor color, const YuvRange& range) {
    const int y = (color.y - range.black) * range.brightness;
    const int cb = color.cb - 128, cr = color.cr - 128;
    return {ByteOfFixed(y + range.redFromCr * cr),
            ByteOfFixed(y + range.greenFromCb * cb + range.greenFromCr * cr),
            ByteOfFixed(y + range.blueFromCb * cb)};
}

// In the limited range. A colour that comes back through RgbOf differs by at most 1 in red and green and 2 in
// blue.
inline YuvColor YuvOf(RgbColor color) {
    const int r = color.red, g = color.green, b = color.blue;
    return {ByteOfFixed((16 << 16) + 16829 * r + 33039 * g + 6416 * b),
            ByteOfFixed((128 << 16) - 9714 * r - 19070 * g + 28784 * b),
            ByteOfFixed((128 << 16) + 28784 * r - 24103 * g - 4681 * b)};
}

}  // namespace kfx
