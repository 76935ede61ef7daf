// SPDX-License-Identifier: MIT
#include "tests/reference/remap_reference.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace kfx::test {
namespace {

int32_t Luminance(int32_t red, int32_t green, int32_t blue) {
    return 150 * green / 255 + 77 * red / 255 + 28 * blue / 255;
}

int32_t LuminanceOfColor(uint32_t color) {
    return Luminance(static_cast<int32_t>(RedOf(color)), static_cast<int32_t>(GreenOf(color)),
                     static_cast<int32_t>(BlueOf(color)));
}

// The colour of a pixel: through the colour table at 8 bits and fewer.
uint32_t ColorAt(const WorkingImage* image, int32_t x, int32_t y) {
    const uint32_t value = GetDibPixel(image, x, y);
    if (image->bitCount > 8) return value & 0xFFFFFF;
    const uint8_t* entry = ColorTableOf(image) + 4 * value;
    return Rgb(entry[2], entry[1], entry[0]);
}

int32_t Find(uint32_t color, const ReferenceTarget& target, int32_t imageBitCount) {
    const int32_t count = std::min(target.colorCount, 1 << imageBitCount);
    const auto red = static_cast<int32_t>(RedOf(color));
    const auto green = static_cast<int32_t>(GreenOf(color));
    const auto blue = static_cast<int32_t>(BlueOf(color));
    if (!target.fastRemap) return ReferenceNearest(target.palette, count, red, green, blue);
    for (int32_t i = 0; i < count; ++i) {
        const uint8_t* entry = target.palette + 3 * i;
        if (entry[0] == red && entry[1] == green && entry[2] == blue) return i;
    }
    return ReferenceNearest(target.palette, count, red / 8 * 8, green / 8 * 8, blue / 8 * 8);
}

int32_t PlainIndex(const WorkingImage* from, int32_t x, int32_t y, const ReferenceTarget& target,
                   int32_t imageBitCount) {
    const uint32_t value = GetDibPixel(from, x, y);
    if (from->bitCount == 1) return Find(value ? 0xFFFFFF : 0, target, imageBitCount);
    const uint32_t color = ColorAt(from, x, y);
    if (target.bitsPerPixel == 1) return LuminanceOfColor(color) < 129 ? 0 : 1;
    if (from->bitCount > 8) return Find(color, target, imageBitCount);
    return ReferenceNearest(target.palette, 1 << target.bitsPerPixel, static_cast<int32_t>(RedOf(color)),
                            static_cast<int32_t>(GreenOf(color)), static_cast<int32_t>(BlueOf(color)));
}

struct Plane {
    int32_t stride;
    std::vector<uint8_t> bytes;

    void Add(int64_t offset, int32_t error) {
        uint8_t& byte = bytes.at(static_cast<size_t>(offset));
        byte = static_cast<uint8_t>(std::min(std::max(byte + error, 0), 255));
    }
};

void DitherGray(const WorkingImage* from, const ReferenceTarget& target, WorkingImage* to) {
    const int32_t width = from->width, height = from->height;
    Plane plane{(width + 3) / 4 * 4, {}};
    plane.bytes.resize(static_cast<size_t>(plane.stride) * static_cast<size_t>(height));
    int32_t smallest = 255, largest = 0;
    for (int32_t row = 0; row < height; ++row) {
        for (int32_t x = 0; x < width; ++x) {
            const int32_t value =
                from->bitCount == 32 ? 0 : LuminanceOfColor(ColorAt(from, x, height - 1 - row));
            plane.bytes[static_cast<size_t>(int64_t{row} * plane.stride + x)] = static_cast<uint8_t>(value);
            smallest = std::min(smallest, value);
            largest = std::max(largest, value);
        }
    }
    int32_t curve[256];
    double v = static_cast<double>(target.brightness) - static_cast<double>(target.contrast);
    for (int32_t i = 0; i < 256; ++i) {
        curve[i] = v > 254 ? 254 : v < 1.0 ? 1 : static_cast<int32_t>(v);
        const double divisor = 256.0 - 2.0 * target.contrast;
        v = divisor == 0 ? 1000 : v + 256.0 / divisor;
    }
    const int32_t threshold = (smallest + largest) / 2;
    for (int32_t row = 0; row < height; ++row) {
        for (int32_t x = 0; x < width; ++x) {
            const int64_t here = int64_t{row} * plane.stride + x;
            const int64_t below = here + plane.stride;
            const int32_t t = curve[plane.bytes[static_cast<size_t>(here)]];
            int32_t error = t - smallest;
            if (t > threshold) {
                SetDibPixel(to, x, height - 1 - row, 1);
                error = t - largest;
            }
            const int32_t q = error >> 4;
            const bool next = row + 1 < height;
            if (x + 1 < width && next) plane.Add(below + 1, q);
            if (next && x != 1) plane.Add(below - 1, 3 * q);
            if (next) plane.Add(below, 5 * q);
            if (x + 1 < width) plane.Add(here + 1, 7 * q);
        }
    }
}

void DitherColor(const WorkingImage* from, const ReferenceTarget& target, WorkingImage* to) {
    const int32_t width = from->width, height = from->height;
    std::vector<int16_t> current(static_cast<size_t>(3 * width) + 512), next(current.size());
    for (int32_t row = 0; row < height; ++row) {
        const int32_t y = height - 1 - row;
        for (int32_t x = 0; x < width; ++x) {
            const uint32_t color = from->bitCount == 32 ? 0 : ColorAt(from, x, y);
            int16_t* sums = &current[3 * static_cast<size_t>(x)];
            sums[0] = static_cast<int16_t>(sums[0] + static_cast<int32_t>(RedOf(color)));
            sums[1] = static_cast<int16_t>(sums[1] + static_cast<int32_t>(GreenOf(color)));
            sums[2] = static_cast<int16_t>(sums[2] + static_cast<int32_t>(BlueOf(color)));
        }
        for (int32_t x = 0; x < width; ++x) {
            int32_t value[3];
            for (int32_t c = 0; c < 3; ++c)
                value[c] = std::min(
                    std::max<int32_t>(current[3 * static_cast<size_t>(x) + static_cast<size_t>(c)], 0), 255);
            const uint32_t color = Rgb(static_cast<uint32_t>(value[0]), static_cast<uint32_t>(value[1]),
                                       static_cast<uint32_t>(value[2]));
            const int32_t index = Find(color, target, to->bitCount);
            SetDibPixel(to, x, y, static_cast<uint32_t>(index));
            const bool below = row + 1 < height;
            for (int32_t c = 0; c < 3; ++c) {
                const int32_t e = value[c] - target.palette[3 * index + c];
                const auto add = [&](std::vector<int16_t>* errors, int32_t column, int32_t error) {
                    int16_t& sum = errors->at(3 * static_cast<size_t>(column) + static_cast<size_t>(c));
                    sum = static_cast<int16_t>(sum + error);
                };
                if (x + 1 < width) add(&current, x + 1, 7 * e >> 4);
                if (x >= 2 && below) add(&next, x - 1, 3 * e >> 4);
                if (x + 1 < width && below) add(&next, x + 1, e >> 4);
                if (below) add(&next, x, 5 * e >> 4);
            }
        }
        current = next;
        std::fill(next.begin(), next.end(), int16_t{0});
    }
}

}  // namespace

int32_t ReferenceNearest(const uint8_t* palette, int32_t count, int32_t red, int32_t green, int32_t blue) {
    for (int32_t i = 0; i < count; ++i)
        if (palette[3 * i] == red && palette[3 * i + 1] == green && palette[3 * i + 2] == blue) return i;
    int32_t best = 1000000, nearest = 0;
    for (int32_t i = 0; i < count; ++i) {
        const int32_t r = red - palette[3 * i], g = green - palette[3 * i + 1], b = blue - palette[3 * i + 2];
        const int32_t distance = 3 * r * r + 4 * g * g + 2 * b * b;
        if (distance >= best) continue;
        best = distance;
        nearest = i;
    }
    return nearest;
}

void ReferenceSort(uint8_t* palette, int32_t count) {
    for (bool swapped = true; swapped;) {
        swapped = false;
        for (int32_t i = 0; i + 1 < count; ++i) {
            uint8_t* a = palette + 3 * i;
            uint8_t* b = a + 3;
            if (Luminance(b[0], b[1], b[2]) >= Luminance(a[0], a[1], a[2])) continue;
            std::swap_ranges(a, b, b);
            swapped = true;
        }
    }
}

ImageHandle ReferencePlainRemap(ImageHandle source, const ReferenceTarget& target) {
    const ImageLock from(source);
    const ImageHandle result =
        CreateDib(from.image->width, from.image->height, target.palette, target.bitsPerPixel);
    const ImageLock to(result);
    for (int32_t y = 0; y < from.image->height; ++y)
        for (int32_t x = 0; x < from.image->width; ++x)
            SetDibPixel(to.image, x, y,
                        static_cast<uint32_t>(PlainIndex(from.image, x, y, target, to.image->bitCount)));
    return result;
}

ImageHandle ReferenceDitherRemap(ImageHandle source, const ReferenceTarget& target) {
    const ImageLock from(source);
    if (from.image->bitCount == 1) return nullptr;
    const ImageHandle result =
        CreateDib(from.image->width, from.image->height, target.palette, target.bitsPerPixel);
    const ImageLock to(result);
    if (target.bitsPerPixel == 1)
        DitherGray(from.image, target, to.image);
    else
        DitherColor(from.image, target, to.image);
    return result;
}

ImageHandle ReferenceUpdateComposite(ImageHandle composite, ImageHandle frame) {
    const uint8_t colors[] = {0, 0, 0, 255, 255, 255};
    const ImageLock shown(composite);
    const ImageLock next(frame);
    const ImageHandle result = CreateDib(shown.image->width, shown.image->height, colors, 1);
    const ImageLock mask(result);
    for (int32_t y = 0; y < shown.image->height; ++y) {
        for (int32_t x = 0; x < shown.image->width; ++x) {
            const uint32_t pixel = GetDibPixel(next.image, x, y);
            if (GetDibPixel(shown.image, x, y) != pixel) {
                SetDibPixel(shown.image, x, y, pixel);
                SetDibPixel(mask.image, x, y, 0);
            } else {
                SetDibPixel(mask.image, x, y, 1);
            }
        }
    }
    return result;
}

}  // namespace kfx::test
