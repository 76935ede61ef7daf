// SPDX-License-Identifier: MIT
// Implode: the picture is pulled towards a centre, inside a circle that reaches to the left edge (the top
// edge in a tall picture). The slider called "Radius:" sets the strength and the centre sets the radius:
// intended.
#include "effects/implode.h"

#include "framework/settings.h"
#include "kernels/implosion.h"
#include "resources/panel_controls.h"

namespace kfx {

ImageHandle ApplyImplode(ImageHandle source, int32_t radius, int32_t centerX, int32_t centerY,
                         uint32_t background, KernelCache* cache) {
    return ImplodePicture(source, radius / 100.0, centerX, centerY, background, cache);
}

namespace {

ImageHandle Kernel(ImageHandle source, const KernelInput& input) {
    return ApplyImplode(source, input.values[0], input.values[1], input.values[2], input.background,
                        input.cache);
}

constexpr EffectControl kControls[] = {
    {ControlKind::Slider, IDC_IMPLODE_RADIUS, &settings.style017Radius, IMPLODE_RADIUS_RANGE},
    {ControlKind::Slider, IDC_IMPLODE_CENTER_X, &settings.style017CenterX, IMPLODE_CENTER_X_RANGE},
    {ControlKind::Slider, IDC_IMPLODE_CENTER_Y, &settings.style017CenterY, IMPLODE_CENTER_Y_RANGE},
};
constexpr uint32_t kControlIds[] = {SLIDER_IDS(IDC_IMPLODE_RADIUS), SLIDER_IDS(IDC_IMPLODE_CENTER_X),
                                    SLIDER_IDS(IDC_IMPLODE_CENTER_Y), 0};

}  // namespace

const EffectRecord kImplodeEffect = {"Implode", IDD_PANEL_IMPLODE, kControlIds, kControls, 3, Kernel,
                                     nullptr};

}  // namespace kfx
