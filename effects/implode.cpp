// SPDX-License-Identifier: MIT
// Implode: the picture is pulled towards a centre, inside a circle that reaches to the left edge (the top
// edge in a tall picture). The slider called "Radius:" sets the strength, and the centre sets the radius.
// The result is defined by the reference kernel; see docs/architecture.md.
#include "effects/effects.h"
#include "framework/settings.h"
#include "kernels/implosion.h"
#include "resources/panel_controls.h"

namespace kfx {
namespace {

// The strength is in hundredths; the centre in percent of width and height.
ImageHandle ApplyImplode(ImageHandle source, const KernelInput& input) {
    return ImplodePicture(source, input.values[0] / 100.0, input.values[1], input.values[2], input.background,
                          input.cache);
}

constexpr auto kControls = MakeControls({
    Slider(IDC_IMPLODE_RADIUS, &settings.style017Radius, IMPLODE_RADIUS_RANGE, IMPLODE_RADIUS_CAPTION),
    Slider(IDC_IMPLODE_CENTER_X, &settings.style017CenterX, IMPLODE_CENTER_X_RANGE, IMPLODE_CENTER_X_CAPTION),
    Slider(IDC_IMPLODE_CENTER_Y, &settings.style017CenterY, IMPLODE_CENTER_Y_RANGE, IMPLODE_CENTER_Y_CAPTION),
});

}  // namespace

const Effect kImplode = {
    .name = "Implode", .panel = IDD_PANEL_IMPLODE, .controls = kControls, .apply = ApplyImplode};

}  // namespace kfx
