// SPDX-License-Identifier: MIT
// Explode: Implode with the strength negated, so the middle is enlarged. Here too the slider called "Radius:"
// sets the strength.
// The result is defined by the reference kernel; see docs/architecture.md.
#include "effects/effects.h"
#include "framework/settings.h"
#include "kernels/implosion.h"
#include "resources/panel_controls.h"

namespace kfx {
namespace {

// The strength is in hundredths; the centre in percent of width and height.
ImageHandle ApplyExplode(ImageHandle source, const KernelInput& input) {
    // Negated in 32 bits with wrap-around: the least number stays the same.
    const auto negated = static_cast<int32_t>(0u - static_cast<uint32_t>(input.values[0]));
    return ImplodePicture(source, negated / 100.0, input.values[1], input.values[2], input.background,
                          input.cache);
}

constexpr auto kControls = MakeControls({
    Slider(IDC_EXPLODE_RADIUS, &settings.style018Radius, EXPLODE_RADIUS_RANGE, EXPLODE_RADIUS_CAPTION),
    Slider(IDC_EXPLODE_CENTER_X, &settings.style018CenterX, EXPLODE_CENTER_X_RANGE, EXPLODE_CENTER_X_CAPTION),
    Slider(IDC_EXPLODE_CENTER_Y, &settings.style018CenterY, EXPLODE_CENTER_Y_RANGE, EXPLODE_CENTER_Y_CAPTION),
});

}  // namespace

const Effect kExplode = {
    .name = "Explode", .panel = IDD_PANEL_EXPLODE, .controls = kControls, .apply = ApplyExplode};

}  // namespace kfx
