// SPDX-License-Identifier: MIT
// Water Drops: every pixel is taken from a random neighbour, as if the picture were seen through drops of
// water. The generator is seeded anew for every frame, with the clock's second: frames of the same second
// scatter alike. Even apertures lean one pixel to the left and up. Both are intended.
#include "effects/water_drops.h"

#include <cstring>

#include "framework/memory_guards.h"
#include "framework/random.h"
#include "framework/settings.h"
#include "resources/panel_controls.h"

namespace kfx {
namespace {

// One row: `numbers` holds two random numbers a pixel, first the column's, then the row's.
void ScatterRow(const WorkingImage* from, int32_t y, const uint16_t* numbers, int32_t aperture,
                WorkingImage* to) {
    const int32_t half = aperture >> 1;
    for (int32_t x = 0; x < from->width; ++x) {
        const int32_t dx = numbers[2 * x] % aperture - half;
        const int32_t dy = numbers[2 * x + 1] % aperture - half;
        uint32_t pixel = GetDibPixel(from, x + dx, y + dy);
        if (pixel == kNoPixel) pixel = GetDibPixel(from, x, y);
        SetDibPixel(to, x, y, pixel);
    }
}

}  // namespace

ImageHandle ApplyWaterDrops(ImageHandle source, int32_t aperture) {
    const ImageLock from(source);
    if (!from.image || aperture < 1) return nullptr;
    MemoryOwner owner(CreateLike(from.image));
    const ImageLock to(owner.memory);
    const Scratch<uint16_t> numbers(2 * static_cast<size_t>(from.image->width));
    if (!to.image || !numbers.address) return nullptr;
    RandomSequence sequence = SeedRandom(ClockSeconds());
    for (int32_t y = 0; y < from.image->height; ++y) {
        NextRandoms(&sequence, numbers.address, 2 * static_cast<size_t>(from.image->width));
        ScatterRow(from.image, y, numbers.address, aperture, to.image);
    }
    return owner.Release();
}

namespace {

ImageHandle Kernel(ImageHandle source, const KernelInput& input) {
    return ApplyWaterDrops(source, input.values[0]);
}

constexpr EffectControl kControls[] = {
    {ControlKind::Slider, IDC_WATER_DROPS_APERTURE, &settings.style008Aperture, WATER_DROPS_APERTURE_RANGE},
};
constexpr uint32_t kControlIds[] = {SLIDER_IDS(IDC_WATER_DROPS_APERTURE), 0};

}  // namespace

const EffectRecord kWaterDropsEffect = {
    "Water Drops", IDD_PANEL_WATER_DROPS, kControlIds, kControls, 1, Kernel, nullptr};

}  // namespace kfx
