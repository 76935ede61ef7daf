// SPDX-License-Identifier: MIT
#include "stage/picture_drawing.h"

#include <algorithm>

#include "stage/drawing_parts.h"

namespace kfx::stage {
namespace {

constexpr int kMostSamples = 3;  // on each axis
// Of the rows that are drawn at a time. Memory of this size comes from what the heap has at hand; larger
// memory waits for the threads that take and give back that of animations.
constexpr int kBandPixels = 16 * 1024;

// Which of the picture's columns (or rows) a column of the screen shows.
struct Samples {
    int count = 1;
    int at[kMostSamples] = {};
};

// For the pixels `first` to `end` of a side of `shown` pixels, which shows `own` pixels of the picture.
std::vector<Samples> SamplesOf(int first, int end, int shown, int own) {
    std::vector<Samples> samples(static_cast<size_t>(std::max(end - first, 0)));
    const int64_t side = std::max(shown, 1);
    for (int i = first; i < end; ++i) {
        Samples& sample = samples[static_cast<size_t>(i - first)];
        const int64_t from = static_cast<int64_t>(i) * own, to = from + own;
        const int64_t span = own > shown ? (to + side - 1) / side - from / side : 1;
        sample.count = static_cast<int>(std::clamp<int64_t>(span, 1, kMostSamples));
        for (int k = 0; k < sample.count; ++k) {
            const int64_t at = (2 * from * sample.count + (2 * k + 1) * static_cast<int64_t>(own)) /
                               (2 * side * sample.count);
            sample.at[k] = static_cast<int>(std::clamp<int64_t>(at, 0, own - 1));
        }
    }
    return samples;
}

struct Mean {
    uint32_t red = 0, green = 0, blue = 0, alpha = 0;  // colours premultiplied with alpha; sums
    uint32_t count = 0;
};

Mean MeanOf(const uint8_t* rgba, int width, const Samples& columns, const Samples& rows) {
    Mean mean;
    for (int row = 0; row < rows.count; ++row) {
        const uint8_t* line = rgba + 4 * static_cast<size_t>(rows.at[row]) * static_cast<size_t>(width);
        for (int column = 0; column < columns.count; ++column) {
            const uint8_t* pixel = line + 4 * static_cast<size_t>(columns.at[column]);
            const uint32_t alpha = pixel[3];
            mean.red += pixel[0] * alpha;
            mean.green += pixel[1] * alpha;
            mean.blue += pixel[2] * alpha;
            mean.alpha += alpha;
        }
    }
    mean.count = static_cast<uint32_t>(rows.count * columns.count);
    return mean;
}

uint32_t Over(uint32_t sum, uint32_t ground, const Mean& mean) {
    const uint32_t whole = 255 * mean.count;
    return (sum + ground * (whole - mean.alpha) + whole / 2) / whole;
}

// As the system has colours in bitmaps: blue in the lowest byte.
uint32_t PixelOf(const Mean& mean, COLORREF ground) {
    return Over(mean.red, GetRValue(ground), mean) << 16 | Over(mean.green, GetGValue(ground), mean) << 8 |
           Over(mean.blue, GetBValue(ground), mean);
}

int SideOf(LONG from, LONG to) { return static_cast<int>(to - from); }

}  // namespace

PictureGround ChequeredGround(int square) {
    const auto grey = [](int value) { return RGB(value, value, value); };
    return {grey(kChequerGreys[0]), grey(kChequerGreys[1]), square};
}

void DrawPicture(HDC target, const RECT& place, const RECT& visible, const uint8_t* rgba, SIZE picture,
                 const PictureGround& ground) {
    RECT part;
    if (!IntersectRect(&part, &place, &visible)) return;
    const int width = SideOf(part.left, part.right), height = SideOf(part.top, part.bottom);
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    const int left = SideOf(place.left, part.left), top = SideOf(place.top, part.top);
    const auto columns = SamplesOf(left, left + width, SideOf(place.left, place.right), picture.cx);
    const auto rows = SamplesOf(top, top + height, SideOf(place.top, place.bottom), picture.cy);
    const int bandRows = std::clamp(kBandPixels / width, 1, height);
    std::vector<uint32_t> bits(static_cast<size_t>(width) * static_cast<size_t>(bandRows));
    const int square = std::max(ground.square, 1);
    for (int band = 0; band < height; band += bandRows) {
        const int end = std::min(band + bandRows, height);
        uint32_t* pixel = bits.data();
        for (int y = band; y < end; ++y) {
            for (int x = 0; x < width; ++x) {
                const Mean mean =
                    MeanOf(rgba, picture.cx, columns[static_cast<size_t>(x)], rows[static_cast<size_t>(y)]);
                const bool odd = IsOddSquare(left + x, top + y, square);
                *pixel++ = PixelOf(mean, odd ? ground.odd : ground.even);
            }
        }
        info.bmiHeader.biHeight = band - end;  // rows from the top
        SetDIBitsToDevice(target, part.left, part.top + band, static_cast<DWORD>(width),
                          static_cast<DWORD>(end - band), 0, 0, 0, static_cast<UINT>(end - band), bits.data(),
                          &info, DIB_RGB_COLORS);
    }
}

std::vector<uint8_t> ScaledPicture(const uint8_t* rgba, SIZE picture, SIZE size) {
    const auto columns = SamplesOf(0, size.cx, size.cx, picture.cx);
    const auto rows = SamplesOf(0, size.cy, size.cy, picture.cy);
    std::vector<uint8_t> scaled;
    scaled.reserve(4 * columns.size() * rows.size());
    for (const Samples& row : rows) {
        for (const Samples& column : columns) {
            const Mean mean = MeanOf(rgba, picture.cx, column, row);
            const uint32_t whole = std::max<uint32_t>(mean.alpha, 1);
            scaled.push_back(static_cast<uint8_t>(mean.red / whole));
            scaled.push_back(static_cast<uint8_t>(mean.green / whole));
            scaled.push_back(static_cast<uint8_t>(mean.blue / whole));
            scaled.push_back(static_cast<uint8_t>(mean.alpha / mean.count));
        }
    }
    return scaled;
}

}  // namespace kfx::stage
