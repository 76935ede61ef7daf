// SPDX-License-Identifier: MIT
// Obscure: a mosaic of square tiles from the top left corner, each filled with the average of its own pixels;
// tiles at the right and bottom edge are cut off.
// The result is defined by the reference kernel; see docs/architecture.md.
#include <algorithm>

#include "effects/effects.h"
#include "framework/settings.h"
#include "kernels/tile_average.h"
#include "resources/panel_controls.h"

namespace kfx {
namespace {

// Takes pictures of every depth. With a level below 1 the picture stays as it is.
ImageHandle ApplyObscure(ImageHandle source, const KernelInput& input) {
    int32_t level = input.values[0];  // a tile's side, pixels
    const ImageLock from(source);
    if (!from || level < 1) return nullptr;
    const int32_t width = from->width;
    const int32_t height = from->height;
    // A tile larger than the picture is cut off anyway, and could overflow.
    level = std::min(level, std::max(width, height));
    NewImage to(CreateLike(from.image));
    const Scratch<uint16_t> columns(3 * static_cast<size_t>(width));
    const Scratch<uint64_t> sums(3 * static_cast<size_t>(width));
    if (!to || !columns || !sums) return nullptr;

    for (TileRow tiles = {0, 0}; tiles.top < height; tiles.top = tiles.bottom) {
        tiles.bottom = std::min(tiles.top + level, height);
        if (from->bitCount == 24) {
            AverageTiles(from.image, tiles, level, {columns.address, sums.address}, to.image);
            continue;
        }
        for (int32_t left = 0; left < width; left += level)
            AverageTileOfAnyDepth(from.image, tiles, left, std::min(left + level, width), to.image);
    }
    return to.Release();
}

constexpr auto kControls = MakeControls({
    Slider(IDC_OBSCURE_LEVEL, &settings.style005Level, OBSCURE_LEVEL_RANGE, OBSCURE_LEVEL_CAPTION),
});

}  // namespace

const Effect kObscure = {
    .name = "Obscure", .panel = IDD_PANEL_OBSCURE, .controls = kControls, .apply = ApplyObscure};

}  // namespace kfx
