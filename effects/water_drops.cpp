// SPDX-License-Identifier: MIT
// Water Drops: every pixel is taken from a random neighbour, as if the picture were seen through drops of
// water. The generator is seeded with the clock's second for every frame, so frames that are made in the same
// second are scattered in the same way. With an even aperture, neighbours may be one pixel farther to the
// left and above than to the right and below.
// The result is defined by the reference kernel; see docs/architecture.md.
#include "effects/effects.h"
#include "framework/random.h"
#include "framework/settings.h"
#include "kernels/scatter.h"
#include "resources/panel_controls.h"

namespace kfx {
namespace {

// Takes pictures of every depth. An aperture below 1 leaves the picture as it is.
ImageHandle ApplyWaterDrops(ImageHandle source, const KernelInput& input) {
    const int32_t aperture = input.values[0];  // pixels
    const ImageLock from(source);
    if (!from || aperture < 1) return nullptr;
    NewImage to(CreateLike(from.image));
    const size_t numberCount = 2 * static_cast<size_t>(from->width);
    const Scratch<uint16_t> numbers(numberCount);
    const Scratch<int32_t> offsets(static_cast<size_t>(from->width));
    if (!to || !numbers || !offsets) return nullptr;
    RandomSequence sequence = SeedRandom(ClockSeconds());
    for (int32_t y = 0; y < from->height; ++y) {
        NextRandoms(&sequence, numbers.address, numberCount);
        ScatterRow(from.image, y, numbers.address, aperture, offsets.address, to.image);
    }
    return to.Release();
}

constexpr auto kControls = MakeControls({
    Slider(IDC_WATER_DROPS_APERTURE, &settings.style008Aperture, WATER_DROPS_APERTURE_RANGE,
           WATER_DROPS_APERTURE_CAPTION),
});

}  // namespace

const Effect kWaterDrops = {.name = "Water Drops",
                            .panel = IDD_PANEL_WATER_DROPS,
                            .controls = kControls,
                            .apply = ApplyWaterDrops,
                            .framesInOrder = true};  // the clock's second is the seed

}  // namespace kfx
