// SPDX-License-Identifier: MIT
#include "kernels/tile_average.h"

#include <algorithm>
#include <cstring>

namespace kfx {
namespace {

constexpr int32_t kMostRowsIn16Bits = 257;  // 257 * 255 is the greatest 16-bit number

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

}  // namespace

void AverageTiles(const WorkingImage* from, const TileRow& tiles, int32_t level, const TileSums& space,
                  WorkingImage* to) {
    uint64_t* sums = space.tiles;
    const int32_t width = from->width;
    const int32_t count = (width - 1) / level + 1;
    std::memset(sums, 0, 3 * static_cast<size_t>(count) * sizeof *sums);
    for (int32_t y = tiles.top; y < tiles.bottom; y += kMostRowsIn16Bits) {
        SumColumns(from, y, std::min(kMostRowsIn16Bits, tiles.bottom - y), space.columns);
        AddToTiles(space.columns, width, level, sums);
    }
    uint8_t* first = PictureRow(to, tiles.top);
    uint8_t* out = first;
    for (int32_t left = 0; left < width; left += level, sums += 3) {
        const int32_t right = std::min(left + level, width);
        const uint64_t pixels =
            static_cast<uint64_t>(right - left) * static_cast<uint64_t>(tiles.bottom - tiles.top);
        // A row of tiles has one row of pixels at least.
        // NOLINTNEXTLINE(clang-analyzer-core.DivideZero)
        const uint8_t average[3] = {static_cast<uint8_t>(sums[0] / pixels),
                                    static_cast<uint8_t>(sums[1] / pixels),
                                    static_cast<uint8_t>(sums[2] / pixels)};
        for (int32_t x = left; x < right; ++x, out += 3) {
            out[0] = average[0];
            out[1] = average[1];
            out[2] = average[2];
        }
    }
    for (int32_t y = tiles.top + 1; y < tiles.bottom; ++y)
        std::memcpy(PictureRow(to, y), first, StrideOf(to));
}

void AverageTileOfAnyDepth(const WorkingImage* from, const TileRow& tiles, int32_t left, int32_t right,
                           WorkingImage* to) {
    uint64_t sums[3] = {0, 0, 0};
    for (int32_t y = tiles.top; y < tiles.bottom; ++y)
        for (int32_t x = left; x < right; ++x) {
            const uint32_t value = GetDibPixel(from, x, y);
            sums[0] += RedOf(value);
            sums[1] += GreenOf(value);
            sums[2] += BlueOf(value);
        }
    const uint64_t count =
        static_cast<uint64_t>(right - left) * static_cast<uint64_t>(tiles.bottom - tiles.top);
    const auto average =
        static_cast<uint32_t>(sums[0] / count | sums[1] / count << 8 | sums[2] / count << 16);
    for (int32_t y = tiles.top; y < tiles.bottom; ++y)
        for (int32_t x = left; x < right; ++x) SetDibPixel(to, x, y, average);
}

}  // namespace kfx
