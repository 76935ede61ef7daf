// SPDX-License-Identifier: MIT
// Error diffusion. The left edge is irregular: column 1 of both kinds and column 0 of the colour kind send no
// error down and left, while column 0 of the gray kind sends it to the byte before the next row. Results are
// compared byte for byte with tests/reference/, which defines it so.
#include <algorithm>
#include <cstring>

#include "builder/palette_order.h"
#include "builder/remap.h"
#include "kernels/error_diffusion.h"
#include "kernels/palette_indices.h"

namespace kfx {
namespace {

// A new 8-bit picture of each pixel's luminance. Sources of other depths stay black.
ImageHandle MakeLuminance(const WorkingImage* from) {
    NewImage to(CreateDib(from->width, from->height, nullptr, 8));
    if (!to) return nullptr;
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
    return to.Release();
}

// Brightness shifts the curve, contrast makes it steeper. With a contrast of 128 it is a single step; with
// more it falls.
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
    NewImage to(CreateDib(from->width, from->height, target.palette, target.bitsPerPixel));
    const MemoryOwner luminance(MakeLuminance(from));
    const ImageLock working(luminance.memory);
    if (!to || !working) return nullptr;

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
    return to.Release();
}

// A row of the source as blue-green-red bytes. Sources of other depths than 24 bits are expanded into
// `spread` (zeroed); depths above 24 bits count as black.
const uint8_t* ColorRow(const WorkingImage* from, int32_t r, const uint8_t colors[kPaletteBytes],
                        uint8_t* spread) {
    const uint8_t* row = StoredRow(from, r);
    if (from->bitCount == 24) return row;
    if (from->bitCount > 8) return spread;
    for (int32_t x = 0; x < from->width; ++x) {
        const uint8_t* color = colors + 3 * GetIndex(row, from->bitCount, x);
        spread[3 * x] = color[2];
        spread[3 * x + 1] = color[1];
        spread[3 * x + 2] = color[0];
    }
    return spread;
}

void FillPalette(const RemapTarget& target, ErrorDiffusion* dither) {
    for (int i = 0; i < 256; ++i) {
        for (int c = 0; c < 3; ++c) dither->palette[i][c] = target.palette[3 * i + 2 - c];
        dither->palette[i][3] = 0;
    }
}

ImageHandle DitherColors(const WorkingImage* from, RemapTarget* target) {
    NewImage to(CreateDib(from->width, from->height, target->palette, target->bitsPerPixel));
    const auto width = static_cast<size_t>(from->width);
    const size_t rowErrors = kErrorLanes * (width + 1);
    const size_t errorCount = (kDiffusedRows + 1) * rowErrors;
    // After the errors there is room for a row that has to be expanded into bytes; full-colour rows are read
    // where they are.
    const size_t spreadBytes = from->bitCount == 24 ? 0 : 3 * width;
    const Scratch<int16_t> errors(errorCount + kDiffusedRows * spreadBytes / sizeof(int16_t));
    if (!to || !errors) return nullptr;
    ErrorDiffusion dither;
    dither.index = IndexFor(target, to->bitCount);
    dither.width = from->width;
    if (!dither.index) return nullptr;
    FillPalette(*target, &dither);
    uint8_t colors[kPaletteBytes];
    ReadColorTable(from, colors);

    auto* spreadRows = reinterpret_cast<uint8_t*>(errors.address + errorCount);
    const DiffuseRows diffuseRows = ChooseDiffuseRows(to->bitCount);
    for (int32_t r = 0; r < from->height; r += kDiffusedRows) {
        DiffusedRow rows[kDiffusedRows];
        const int32_t count = std::min(kDiffusedRows, from->height - r);
        for (int32_t k = 0; k < count; ++k) {
            int16_t* rowStart = errors.address + static_cast<size_t>(k) * rowErrors + kErrorLanes;
            uint8_t* rowColors = spreadRows + static_cast<size_t>(k) * spreadBytes;
            rows[k] = {ColorRow(from, r + k, colors, rowColors), rowStart, rowStart + rowErrors,
                       StoredRow(to.image, r + k)};
        }
        diffuseRows(dither, rows, count);
        std::memcpy(errors.address, errors.address + static_cast<size_t>(count) * rowErrors,
                    rowErrors * sizeof(int16_t));
    }
    return to.Release();
}

}  // namespace

ImageHandle DitherRemap(ImageHandle source, RemapTarget* target) {
    const ImageLock from(source);
    if (!from || from->bitCount == 1) return nullptr;
    return target->bitsPerPixel == 1 ? DitherGray(from.image, *target) : DitherColors(from.image, target);
}

}  // namespace kfx
