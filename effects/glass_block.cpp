// SPDX-License-Identifier: MIT
// Glass Block: square cells, each showing the surroundings of its centre at half size by taking every second
// pixel. Where a cell leaves the picture, rows repeat the last row but columns show their own column.
// The result is defined by the reference kernel; see docs/architecture.md.
#include <algorithm>
#include <cstring>

#include "effects/effects.h"
#include "framework/settings.h"
#include "resources/panel_controls.h"

namespace kfx {
namespace {

// The coordinate that is shown at coordinate t, without regard to the picture's edge. Cells are centred on
// multiples of 2 * size, so only half of the first one is in the picture.
int32_t Magnified(int32_t t, int32_t size) {
    const int32_t base = t < size ? 0 : ((t - size) / (2 * size) + 1) * 2 * size;
    return base + 2 * (t - base);
}

void FillRow(const uint8_t* from, const int32_t* columns, int32_t width, uint8_t* to) {
    for (int32_t x = 0; x < width; ++x, to += 3) {
        const uint8_t* pixel = from + 3 * static_cast<size_t>(columns[x]);
        to[0] = pixel[0];
        to[1] = pixel[1];
        to[2] = pixel[2];
    }
}

// Takes pictures of every depth. With a size below 1 the picture stays as it is.
ImageHandle ApplyGlassBlock(ImageHandle source, const KernelInput& input) {
    int32_t size = input.values[0];  // half a cell's side, pixels
    const ImageLock from(source);
    if (!from || size < 1) return nullptr;
    const int32_t width = from->width;
    const int32_t height = from->height;
    // A cell larger than the picture gives the same result as one of its size, and could overflow.
    size = std::min(size, std::max(width, height));
    NewImage to(CreateLike(from.image));
    const Scratch<int32_t> columns(static_cast<size_t>(width));
    if (!to || !columns) return nullptr;

    for (int32_t x = 0; x < width; ++x) {
        const int32_t column = Magnified(x, size);
        columns.address[x] = column < width ? column : x;
    }
    const auto rowAt = [&](int32_t y) { return std::min(Magnified(y, size), height - 1); };
    const size_t stride = StrideOf(to.image);
    for (int32_t y = 0; y < height; ++y) {
        const int32_t row = rowAt(y);
        // The upper half of a cell shows the same rows as the lower half of the cell above it, and rows
        // limited to the last one repeat the row before. Such rows are copied.
        const int32_t twin = y >= size && rowAt(y - size) == row ? y - size : y - 1;
        if (twin >= 0 && rowAt(twin) == row)
            std::memcpy(PictureRow(to.image, y), PictureRow(to.image, twin), stride);
        else if (from->bitCount == 24)
            FillRow(PictureRow(from.image, row), columns.address, width, PictureRow(to.image, y));
        else
            for (int32_t x = 0; x < width; ++x)
                SetDibPixel(to.image, x, y, GetDibPixel(from.image, columns.address[x], row));
    }
    return to.Release();
}

constexpr auto kControls = MakeControls({
    Slider(IDC_GLASS_BLOCK_SIZE, &settings.style002Size, GLASS_BLOCK_SIZE_RANGE, GLASS_BLOCK_SIZE_CAPTION),
});

}  // namespace

const Effect kGlassBlock = {
    .name = "Glass Block", .panel = IDD_PANEL_GLASS_BLOCK, .controls = kControls, .apply = ApplyGlassBlock};

}  // namespace kfx
