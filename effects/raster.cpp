// SPDX-License-Identifier: MIT
// Raster: horizontal scan lines, bands of rows blended towards the background colour between untouched bands
// of the same height.
#include "effects/raster.h"

#include <cstring>

#include "framework/memory_guards.h"
#include "framework/settings.h"
#include "resources/panel_controls.h"

namespace kfx {
namespace {

// What each value of a channel becomes on a line. Source and background are divided apart, each truncating.
void FillTints(int32_t density, uint32_t channel, uint8_t tints[256]) {
    const int64_t added = int64_t{channel} * density / 255;
    for (int64_t c = 0; c < 256; ++c)
        tints[c] = static_cast<uint8_t>(c * (255 - int64_t{density}) / 255 + added);
}

void TintRow(const uint8_t* from, int32_t width, const uint8_t tints[3][256], uint8_t* to) {
    for (int32_t x = 0; x < width; ++x, from += 3, to += 3) {
        to[0] = tints[0][from[0]];
        to[1] = tints[1][from[1]];
        to[2] = tints[2][from[2]];
    }
}

bool IsLine(int32_t y, int32_t size) { return size > 0 && y / size % 2 == 0; }

}  // namespace

ImageHandle ApplyRaster(ImageHandle source, int32_t density, int32_t size, uint32_t background) {
    const ImageLock from(source);
    if (!from.image || from.image->bitCount != 24) return nullptr;
    MemoryOwner owner(CreateLike(from.image));
    const ImageLock to(owner.memory);
    if (!to.image) return nullptr;

    uint8_t tints[3][256];
    FillTints(density, BlueOf(background), tints[0]);
    FillTints(density, GreenOf(background), tints[1]);
    FillTints(density, RedOf(background), tints[2]);
    const int32_t width = from.image->width;
    for (int32_t y = 0; y < from.image->height; ++y) {
        if (IsLine(y, size))
            TintRow(PictureRow(from.image, y), width, tints, PictureRow(to.image, y));
        else
            std::memcpy(PictureRow(to.image, y), PictureRow(from.image, y), 3 * static_cast<size_t>(width));
    }
    return owner.Release();
}

namespace {

ImageHandle Kernel(ImageHandle source, const KernelInput& input) {
    return ApplyRaster(source, input.values[0], input.values[1], input.background);
}

constexpr EffectControl kControls[] = {
    {ControlKind::Slider, IDC_RASTER_DENSITY, &settings.style011Density, RASTER_DENSITY_RANGE},
    {ControlKind::Slider, IDC_RASTER_SIZE, &settings.style011Size, RASTER_SIZE_RANGE},
};
constexpr uint32_t kControlIds[] = {SLIDER_IDS(IDC_RASTER_DENSITY), SLIDER_IDS(IDC_RASTER_SIZE), 0};

}  // namespace

const EffectRecord kRasterEffect = {"Raster", IDD_PANEL_RASTER, kControlIds, kControls, 2, Kernel, nullptr};

}  // namespace kfx
