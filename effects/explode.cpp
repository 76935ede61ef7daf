// SPDX-License-Identifier: MIT
// Explode: Implode with the strength negated, so the middle is enlarged. Here too the slider called "Radius:"
// sets the strength: intended.
#include "effects/explode.h"

#include "framework/settings.h"
#include "kernels/implosion.h"
#include "resources/panel_controls.h"

namespace kfx {

ImageHandle ApplyExplode(ImageHandle source, int32_t radius, int32_t centerX, int32_t centerY,
                         uint32_t background, KernelCache* cache) {
    // Negated in 32 bits, where the least number stays itself.
    const auto negated = static_cast<int32_t>(0u - static_cast<uint32_t>(radius));
    return ImplodePicture(source, negated / 100.0, centerX, centerY, background, cache);
}

namespace {

ImageHandle Kernel(ImageHandle source, const KernelInput& input) {
    return ApplyExplode(source, input.values[0], input.values[1], input.values[2], input.background,
                        input.cache);
}

constexpr EffectControl kControls[] = {
    {ControlKind::Slider, IDC_EXPLODE_RADIUS, &settings.style018Radius, EXPLODE_RADIUS_RANGE},
    {ControlKind::Slider, IDC_EXPLODE_CENTER_X, &settings.style018CenterX, EXPLODE_CENTER_X_RANGE},
    {ControlKind::Slider, IDC_EXPLODE_CENTER_Y, &settings.style018CenterY, EXPLODE_CENTER_Y_RANGE},
};
constexpr uint32_t kControlIds[] = {SLIDER_IDS(IDC_EXPLODE_RADIUS), SLIDER_IDS(IDC_EXPLODE_CENTER_X),
                                    SLIDER_IDS(IDC_EXPLODE_CENTER_Y), 0};

}  // namespace

const EffectRecord kExplodeEffect = {"Explode", IDD_PANEL_EXPLODE, kControlIds, kControls, 3, Kernel,
                                     nullptr};

}  // namespace kfx
