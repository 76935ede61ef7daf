// SPDX-License-Identifier: MIT
// Error diffusion. The irregular left edges (column 1 of both kinds, column 0 of the colour kind keep their
// error from going down and left; gray's column 0 sends it to the byte before the next row) are intended:
// they are what the pictures have always looked like.
#include <algorithm>
#include <cstring>

#include "builder/palette_order.h"
#include "builder/remap.h"
#include "framework/memory_guards.h"

namespace kfx {
namespace {

// A new 8-bit picture of each pixel's luminance. Sources of other depths stay black.
ImageHandle MakeLuminance(const WorkingImage* from) {
    MemoryOwner owner(CreateDib(from->width, from->height, nullptr, 8));
    const ImageLock to(owner.memory);
    if (!to.image) return nullptr;
    uint8_t colors[kPaletteBytes];
    ReadColorTable(from, colors);
    for (int32_t r = 0; r < from->height; ++r) {
        const uint8_t* row = StoredRow(from, r);
        uint8_t* out = StoredRow(to.image, r);
        if (from->bitCount == 24) {
            for (int32_t x = 0; x < from->width; ++x, row += 3)
                out[x] = static_cast<uint8_t>(LuminanceOf(row[2], row[1], row[0]));
        } else if (from->bitCount <= 8) {
            for (int32_t x = 0; x < from->width; ++x) {
                const uint8_t* color = colors + 3 * GetIndex(row, from->bitCount, x);
                out[x] = static_cast<uint8_t>(LuminanceOf(color[0], color[1], color[2]));
            }
        }
    }
    return owner.Release();
}

// Brightness shifts the curve, contrast steepens it. A contrast of 128 makes the step infinite, more makes it
// fall.
void MakeToneCurve(int32_t brightness, int32_t contrast, uint8_t curve[256]) {
    const double divisor = 256.0 - 2.0 * contrast;
    double v = static_cast<double>(brightness) - contrast;
    for (int i = 0; i < 256; ++i) {
        curve[i] = static_cast<uint8_t>(v > 254 ? 254 : v < 1.0 ? 1 : static_cast<int>(v));
        v = divisor == 0 ? 255 : v + 256 / divisor;
    }
}

void AddClamped(uint8_t* pixel, int32_t error) {
    *pixel = static_cast<uint8_t>(std::clamp(*pixel + error, 0, 255));
}

// One row of the gray kind; `below` is null in the last row.
void DitherGrayRow(uint8_t* row, uint8_t* below, int32_t width, const uint8_t curve[256], int32_t smallest,
                   int32_t largest, uint8_t* out) {
    const int32_t threshold = (smallest + largest) / 2;
    for (int32_t x = 0; x < width; ++x) {
        const int32_t tone = curve[row[x]];
        const bool bright = tone > threshold;
        if (bright) PutIndex<1>(out, x, 1);
        const int32_t share = (tone - (bright ? largest : smallest)) >> 4;
        if (x + 1 < width) AddClamped(row + x + 1, 7 * share);
        if (!below) continue;
        if (x + 1 < width) AddClamped(below + x + 1, share);
        if (x != 1)
            AddClamped(below + x - 1, 3 * share);  // for x = 0 the byte before the row: still in the picture
        AddClamped(below + x, 5 * share);
    }
}

ImageHandle DitherGray(const WorkingImage* from, const RemapTarget& target) {
    MemoryOwner owner(CreateDib(from->width, from->height, target.palette, target.bitsPerPixel));
    const ImageLock to(owner.memory);
    const MemoryOwner luminance(MakeLuminance(from));
    const ImageLock working(luminance.memory);
    if (!to.image || !working.image) return nullptr;

    uint8_t smallest = 255;
    uint8_t largest = 0;
    for (int32_t r = 0; r < from->height; ++r) {
        const uint8_t* row = StoredRow(working.image, r);
        const auto [least, greatest] = std::minmax_element(row, row + from->width);
        smallest = std::min(smallest, *least);
        largest = std::max(largest, *greatest);
    }
    uint8_t curve[256];
    MakeToneCurve(target.ditherBrightness, target.ditherContrast, curve);
    for (int32_t r = 0; r < from->height; ++r) {
        uint8_t* below = r + 1 < from->height ? StoredRow(working.image, r + 1) : nullptr;
        DitherGrayRow(StoredRow(working.image, r), below, from->width, curve, smallest, largest,
                      StoredRow(to.image, r));
    }
    return owner.Release();
}

// A row of the source as blue-green-red bytes; null for depths that count as black.
const uint8_t* ColorRow(const WorkingImage* from, int32_t r, const uint8_t colors[kPaletteBytes],
                        uint8_t* spread) {
    const uint8_t* row = StoredRow(from, r);
    if (from->bitCount == 24) return row;
    if (from->bitCount > 8) return spread;  // zeroed
    for (int32_t x = 0; x < from->width; ++x) {
        const uint8_t* color = colors + 3 * GetIndex(row, from->bitCount, x);
        spread[3 * x] = color[2];
        spread[3 * x + 1] = color[1];
        spread[3 * x + 2] = color[0];
    }
    return spread;
}

// One row of the colour kind. `current` and `next` hold the errors of this row and the next, blue, green, red
// for each pixel and room for one more; `next` is zeroed.
template <int kBits>
void DitherColorRow(const uint8_t* from, int32_t width, RemapTarget* target, const int16_t* current,
                    int16_t* next, uint8_t* out) {
    int32_t right[3] = {0, 0, 0};  // what the pixel to the left hands on
    for (int32_t x = 0; x < width; ++x, from += 3, current += 3, next += 3) {
        int32_t value[3];
        for (int c = 0; c < 3; ++c) value[c] = std::clamp(from[c] + current[c] + right[c], 0, 255);
        const uint8_t entry =
            LookUpColor(&target->index, static_cast<uint32_t>(value[0] | value[1] << 8 | value[2] << 16));
        PutIndex<kBits>(out, x, entry);
        for (int c = 0; c < 3; ++c) {
            const int32_t error = value[c] - target->palette[3 * entry + 2 - c];
            right[c] = 7 * error >> 4;
            if (x >= 2) next[c - 3] = static_cast<int16_t>(next[c - 3] + (3 * error >> 4));
            next[c] = static_cast<int16_t>(next[c] + (5 * error >> 4));
            next[c + 3] = static_cast<int16_t>(error >> 4);
        }
    }
}

ImageHandle DitherColors(const WorkingImage* from, RemapTarget* target) {
    MemoryOwner owner(CreateDib(from->width, from->height, target->palette, target->bitsPerPixel));
    const ImageLock to(owner.memory);
    const size_t rowValues = 3 * (static_cast<size_t>(from->width) + 1);
    const Scratch<int16_t> errors(2 * rowValues);
    const Scratch<uint8_t> spread(from->bitCount == 24 ? 1 : rowValues);
    if (!to.image || !errors.address || !spread.address || !IndexFor(target, to.image->bitCount))
        return nullptr;

    uint8_t colors[kPaletteBytes];
    ReadColorTable(from, colors);
    int16_t* current = errors.address;
    int16_t* next = errors.address + rowValues;
    const auto ditherRow = to.image->bitCount == 8 ? DitherColorRow<8> : DitherColorRow<4>;
    for (int32_t r = 0; r < from->height; ++r) {
        ditherRow(ColorRow(from, r, colors, spread.address), from->width, target, current, next,
                  StoredRow(to.image, r));
        std::swap(current, next);
        std::memset(next, 0, rowValues * sizeof *next);
    }
    return owner.Release();
}

}  // namespace

ImageHandle DitherRemap(ImageHandle source, RemapTarget* target) {
    const ImageLock from(source);
    if (!from.image || from.image->bitCount == 1) return nullptr;
    return target->bitsPerPixel == 1 ? DitherGray(from.image, *target) : DitherColors(from.image, target);
}

}  // namespace kfx
