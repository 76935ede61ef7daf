// SPDX-License-Identifier: MIT
// Obscure: a mosaic of square tiles from the top left corner, each filled with the average of its own pixels;
// tiles at the right and bottom edge are cut off.
#include "effects/obscure.h"

#include <algorithm>
#include <cstring>

#include "framework/memory_guards.h"
#include "framework/settings.h"
#include "resources/panel_controls.h"

namespace kfx {
namespace {

constexpr int32_t kMostRowsIn16Bits = 257;  // 257 * 255 is the greatest 16-bit number

struct Band {
    int32_t top;
    int32_t bottom;  // the row after the last
};

// Adds `count` rows from picture row y on, byte column by byte column.
void SumColumns(const WorkingImage* image, int32_t y, int32_t count, uint16_t* columns) {
    const size_t bytes = 3 * static_cast<size_t>(image->width);
    std::memset(columns, 0, bytes * sizeof *columns);
    for (int32_t i = 0; i < count; ++i) {
        const uint8_t* row = PictureRow(image, y + i);
        for (size_t b = 0; b < bytes; ++b) columns[b] = static_cast<uint16_t>(columns[b] + row[b]);
    }
}

// Adds the columns of each tile to its three sums.
void AddToTiles(const uint16_t* columns, int32_t width, int32_t level, uint64_t* sums) {
    for (int32_t left = 0; left < width; left += level, sums += 3) {
        const int32_t right = std::min(left + level, width);
        uint64_t blue = 0, green = 0, red = 0;
        for (int32_t x = left; x < right; ++x, columns += 3) {
            blue += columns[0];
            green += columns[1];
            red += columns[2];
        }
        sums[0] += blue;
        sums[1] += green;
        sums[2] += red;
    }
}

void FillBand(const WorkingImage* from, WorkingImage* to, const Band& band, int32_t level, uint16_t* columns,
              uint64_t* sums) {
    const int32_t width = from->width;
    const int32_t tiles = (width - 1) / level + 1;
    std::memset(sums, 0, 3 * static_cast<size_t>(tiles) * sizeof *sums);
    for (int32_t y = band.top; y < band.bottom; y += kMostRowsIn16Bits) {
        SumColumns(from, y, std::min(kMostRowsIn16Bits, band.bottom - y), columns);
        AddToTiles(columns, width, level, sums);
    }
    uint8_t* first = PictureRow(to, band.top);
    uint8_t* out = first;
    for (int32_t left = 0; left < width; left += level, sums += 3) {
        const int32_t right = std::min(left + level, width);
        const uint64_t count =
            static_cast<uint64_t>(right - left) * static_cast<uint64_t>(band.bottom - band.top);
        const uint8_t average[3] = {static_cast<uint8_t>(sums[0] / count),
                                    static_cast<uint8_t>(sums[1] / count),
                                    static_cast<uint8_t>(sums[2] / count)};
        for (int32_t x = left; x < right; ++x, out += 3) {
            out[0] = average[0];
            out[1] = average[1];
            out[2] = average[2];
        }
    }
    for (int32_t y = band.top + 1; y < band.bottom; ++y) std::memcpy(PictureRow(to, y), first, StrideOf(to));
}

// Any depth: what is averaged are the bytes of the pixel values, colour-table indices included.
void FillTile(const WorkingImage* from, WorkingImage* to, const Band& band, int32_t left, int32_t right) {
    uint64_t sums[3] = {0, 0, 0};
    for (int32_t y = band.top; y < band.bottom; ++y)
        for (int32_t x = left; x < right; ++x) {
            const uint32_t value = GetDibPixel(from, x, y);
            sums[0] += RedOf(value);
            sums[1] += GreenOf(value);
            sums[2] += BlueOf(value);
        }
    const uint64_t count =
        static_cast<uint64_t>(right - left) * static_cast<uint64_t>(band.bottom - band.top);
    const auto average =
        static_cast<uint32_t>(sums[0] / count | sums[1] / count << 8 | sums[2] / count << 16);
    for (int32_t y = band.top; y < band.bottom; ++y)
        for (int32_t x = left; x < right; ++x) SetDibPixel(to, x, y, average);
}

}  // namespace

ImageHandle ApplyObscure(ImageHandle source, int32_t level) {
    const ImageLock from(source);
    if (!from.image || level < 1) return nullptr;
    const int32_t width = from.image->width;
    const int32_t height = from.image->height;
    // A tile larger than the picture is cut off in any case, and must not overflow.
    level = std::min(level, std::max(width, height));
    MemoryOwner owner(CreateLike(from.image));
    const ImageLock to(owner.memory);
    const Scratch<uint16_t> columns(3 * static_cast<size_t>(width));
    const Scratch<uint64_t> sums(3 * static_cast<size_t>(width));
    if (!to.image || !columns.address || !sums.address) return nullptr;

    for (Band band = {0, 0}; band.top < height; band.top = band.bottom) {
        band.bottom = std::min(band.top + level, height);
        if (from.image->bitCount == 24) {
            FillBand(from.image, to.image, band, level, columns.address, sums.address);
            continue;
        }
        for (int32_t left = 0; left < width; left += level)
            FillTile(from.image, to.image, band, left, std::min(left + level, width));
    }
    return owner.Release();
}

namespace {

ImageHandle Kernel(ImageHandle source, const KernelInput& input) {
    return ApplyObscure(source, input.values[0]);
}

constexpr EffectControl kControls[] = {
    {ControlKind::Slider, IDC_OBSCURE_LEVEL, &settings.style005Level, OBSCURE_LEVEL_RANGE},
};
constexpr uint32_t kControlIds[] = {SLIDER_IDS(IDC_OBSCURE_LEVEL), 0};

}  // namespace

const EffectRecord kObscureEffect = {"Obscure", IDD_PANEL_OBSCURE, kControlIds, kControls, 1, Kernel,
                                     nullptr};

}  // namespace kfx
