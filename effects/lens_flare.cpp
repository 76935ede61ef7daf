// SPDX-License-Identifier: MIT
// Lens Flare: a light made of four glows and a ring, and nineteen reflections along the line from the light
// through the picture's centre, all blended towards white. Inside a halo's rim the strength falls again.
// The result is defined by the reference kernel; see docs/architecture.md.
#include "effects/effects.h"
#include "framework/settings.h"
#include "kernels/flare_elements.h"
#include "resources/panel_controls.h"

namespace kfx {
namespace {

// The light's place along one side, in pixels. A file may hold a setting far outside the slider's range: the
// place is limited, so that differences of places fit 32 bits.
int32_t LightPlace(int32_t percent, int32_t size) {
    constexpr int64_t kFarthest = 1 << 28;
    const int64_t place = (int64_t{percent} - 50) * size / 100 + size / 2;
    return static_cast<int32_t>(place < -kFarthest ? -kFarthest : place > kFarthest ? kFarthest : place);
}

// Takes pictures of any depth, though only 24 and 32 bits give useful results. The light stands at a place in
// percent of width and height; the flare's scale is in percent of the longer side, and below one pixel
// nothing is painted.
ImageHandle ApplyLensFlare(ImageHandle source, const KernelInput& input) {
    const int32_t intensity = input.values[2];
    const ImageLock from(source);
    if (!from) return nullptr;
    const int32_t width = from->width;
    const int32_t height = from->height;
    NewImage to(DuplicateImage(from.image));
    const Scratch<float> strengths(static_cast<size_t>(width));
    if (!to || !strengths) return nullptr;
    const int64_t scale = int64_t{width > height ? width : height} * intensity / 100;
    if (scale > 0)
        PaintFlare(to.image, LightPlace(input.values[0], width), LightPlace(input.values[1], height),
                   static_cast<double>(scale), strengths.address);
    return to.Release();
}

constexpr auto kControls = MakeControls({
    Slider(IDC_LENS_FLARE_CENTER_X, &settings.style001CenterX, LENS_FLARE_CENTER_X_RANGE,
           LENS_FLARE_CENTER_X_CAPTION),
    Slider(IDC_LENS_FLARE_CENTER_Y, &settings.style001CenterY, LENS_FLARE_CENTER_Y_RANGE,
           LENS_FLARE_CENTER_Y_CAPTION),
    Slider(IDC_LENS_FLARE_INTENSITY, &settings.style001Intensity, LENS_FLARE_INTENSITY_RANGE,
           LENS_FLARE_INTENSITY_CAPTION),
});

}  // namespace

const Effect kLensFlare = {
    .name = "Lens Flare", .panel = IDD_PANEL_LENS_FLARE, .controls = kControls, .apply = ApplyLensFlare};

}  // namespace kfx
