// SPDX-License-Identifier: MIT
#include "kernels/line_blur.h"

#include <algorithm>
#include <cstring>

namespace kfx {

void BlurLine(const float* weights, int32_t n, const uint8_t* source, uint8_t* destination, int32_t length,
              int32_t channels) {
    if (n > length) return;
    const int32_t half = n / 2;
    for (int32_t i = 0; i < length; ++i) {
        const int32_t first = i - half;
        const int32_t begin = std::max(0, -first);
        const int32_t end = std::min(n, length - first);
        const bool cut = i < half || i >= length - half;
        for (int32_t channel = 0; channel < channels; ++channel) {
            float sum = 0, weightSum = 0;
            for (int32_t j = begin; j < end; ++j) {
                sum += weights[j] * source[static_cast<ptrdiff_t>(first + j) * channels + channel];
                weightSum += weights[j];
            }
            const double rounded = sum + 0.5;
            destination[static_cast<ptrdiff_t>(i) * channels + channel] =
                static_cast<uint8_t>(static_cast<int32_t>(cut ? rounded / weightSum : rounded));
        }
    }
}

namespace {

struct Lines {
    const float* weights;
    int32_t count;  // of weights
    uint8_t* line;
    uint8_t* blurred;
};

// Blurs the row or column of `length` pixels that begins at (x, y), of any depth: colours channel by channel,
// a fourth byte staying as it is; colour-table indices as numbers.
void BlurPixels(WorkingImage* image, int32_t x, int32_t y, bool isRow, int32_t length, const Lines& lines) {
    const int32_t channels = image->bitCount <= 8 ? 1 : 3;
    for (int32_t i = 0; i < length; ++i) {
        const uint32_t value = GetDibPixel(image, isRow ? i : x, isRow ? y : i);
        for (int32_t c = 0; c < channels; ++c)
            lines.line[static_cast<ptrdiff_t>(i) * channels + c] = static_cast<uint8_t>(value >> 8 * c);
    }
    const size_t bytes = static_cast<size_t>(length) * static_cast<size_t>(channels);
    std::memcpy(lines.blurred, lines.line, bytes);
    BlurLine(lines.weights, lines.count, lines.line, lines.blurred, length, channels);
    for (int32_t i = 0; i < length; ++i) {
        const int32_t column = isRow ? i : x;
        const int32_t row = isRow ? y : i;
        uint32_t value = GetDibPixel(image, column, row) & 0xFF000000;
        for (int32_t c = 0; c < channels; ++c)
            value |= uint32_t{lines.blurred[static_cast<ptrdiff_t>(i) * channels + c]} << 8 * c;
        SetDibPixel(image, column, row, value);
    }
}

}  // namespace

bool BlurAnyDepth(const WorkingImage* from, WorkingImage* to, const float* weights, int32_t n) {
    const size_t longest = 3 * static_cast<size_t>(std::max(from->width, from->height));
    const Scratch<uint8_t> line(longest);
    const Scratch<uint8_t> blurred(longest);
    if (!line || !blurred) return false;
    std::memcpy(PixelsOf(to), PixelsOf(from), StrideOf(from) * static_cast<size_t>(from->height));
    const Lines lines = {weights, n, line.address, blurred.address};
    for (int32_t y = 0; y < to->height; ++y) BlurPixels(to, 0, y, true, to->width, lines);
    for (int32_t x = 0; x < to->width; ++x) BlurPixels(to, x, 0, false, to->height, lines);
    return true;
}

}  // namespace kfx
