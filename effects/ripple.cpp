// SPDX-License-Identifier: MIT
// Ripple: sine waves round a centre. Each pixel is fetched from a place shifted by the wave's height there,
// by as much to the right as downwards, and not along the radius. Waves that dissipate are measured against
// the distance of the lower right corner, whichever corner is farthest: beyond it they turn over and grow
// again. The last column and the last row blend with black. All of that is intended.
#include "effects/ripple.h"

#include <cmath>

#include "framework/math/elementary.h"
#include "framework/settings.h"
#include "kernels/radial_field.h"
#include "kernels/shifted_blend.h"
#include "resources/panel_controls.h"

namespace kfx {
namespace {

constexpr double kTwoPi = 6.283185307179586;

struct Wave {
    double length;  // pixels
    double height;
    double phase;  // radians
    double energy;
    double reach;  // the distance at which dissipating waves are flat
    bool dissipate;
};

// The wave's height at each distance.
void ComputeShifts(const void* settings, const double* columnSquares, int32_t count, double rowSquare,
                   double* values) {
    const Wave& wave = *static_cast<const Wave*>(settings);
    for (int32_t k = 0; k < count; ++k)
        values[k] = std::sqrt(columnSquares[k] + rowSquare) / wave.length * kTwoPi + wave.phase;
    SinRow(values, count, values);
    for (int32_t k = 0; k < count; ++k) {
        const double shift = values[k] * wave.height;
        const double distance = std::sqrt(columnSquares[k] + rowSquare);
        values[k] = wave.dissipate ? shift * (1.0 - distance / (wave.reach + 0.0001)) * wave.energy : shift;
    }
}

double Center(int32_t size, int32_t percent) {
    const int64_t offset = size * (int64_t{percent} - 100) / 100;
    return static_cast<double>(offset) + size * 0.5;
}

}  // namespace

ImageHandle ApplyRipple(ImageHandle source, const RippleSettings& ripple, KernelCache* cache) {
    const ImageLock from(source);
    if (!from.image || ripple.wavelength == 0) return nullptr;
    const int32_t width = from.image->width;
    const int32_t height = from.image->height;
    const double centerX = Center(width, ripple.centerX);
    const double centerY = Center(height, ripple.centerY);
    Wave wave = {};
    wave.length = ripple.wavelength / 100.0;
    wave.height = ripple.amplitude / 100.0;
    wave.phase = ripple.phase / 100.0;
    wave.energy = ripple.energy / 100.0;
    wave.dissipate = ripple.dissipate != 0;
    wave.reach = std::sqrt((height - centerY) * (height - centerY) + (width - centerX) * (width - centerX));

    MemoryOwner owner(CreateLike(from.image));
    const ImageLock to(owner.memory);
    const RadialAxis columns(width, centerX, 1);
    const RadialAxis rows(height, centerY, 1);
    const Scratch<double> fieldRow(static_cast<size_t>(width));
    const Scratch<double> shifts(static_cast<size_t>(width));
    if (!to.image || !columns.Ready() || !rows.Ready() || !fieldRow.address || !shifts.address)
        return nullptr;
    RadialField field = {&columns, &rows, ComputeShifts, &wave, 1, nullptr, fieldRow.address};
    const struct {
        int32_t size[2];
        RippleSettings ripple;
    } key = {{width, height}, ripple};
    KeepRadialField(&field, cache, &key, sizeof key);
    for (int32_t y = 0; y < height; ++y) {
        const double* values = RadialRowAt(field, y);
        for (int32_t x = 0; x < width; ++x) shifts.address[x] = values[columns.distance.address[x]];
        BlendShiftedRow(from.image, y, shifts.address, to.image);
    }
    return owner.Release();
}

namespace {

ImageHandle Kernel(ImageHandle source, const KernelInput& input) {
    RippleSettings ripple = {};
    ripple.centerX = input.values[0];
    ripple.centerY = input.values[1];
    ripple.amplitude = input.values[2];
    ripple.wavelength = input.values[3];
    ripple.phase = input.values[4];
    ripple.energy = input.values[5];
    ripple.dissipate = input.values[6];
    return ApplyRipple(source, ripple, input.cache);
}

constexpr EffectControl kControls[] = {
    {ControlKind::Slider, IDC_RIPPLE_CENTER_X, &settings.style009CenterX, RIPPLE_CENTER_X_RANGE},
    {ControlKind::Slider, IDC_RIPPLE_CENTER_Y, &settings.style009CenterY, RIPPLE_CENTER_Y_RANGE},
    {ControlKind::Slider, IDC_RIPPLE_AMPLITUDE, &settings.style009Amplitude, RIPPLE_AMPLITUDE_RANGE},
    {ControlKind::Slider, IDC_RIPPLE_WAVELENGTH, &settings.style009Wavelength, RIPPLE_WAVELENGTH_RANGE},
    {ControlKind::Slider, IDC_RIPPLE_PHASE, &settings.style009Phase, RIPPLE_PHASE_RANGE},
    {ControlKind::Slider, IDC_RIPPLE_ENERGY, &settings.style009Energy, RIPPLE_ENERGY_RANGE},
    {ControlKind::CheckBox, IDC_RIPPLE_DISSIPATE, &settings.style009Dissipate, RIPPLE_DISSIPATE_TEXT},
};
constexpr uint32_t kControlIds[] = {SLIDER_IDS(IDC_RIPPLE_CENTER_X),
                                    SLIDER_IDS(IDC_RIPPLE_CENTER_Y),
                                    SLIDER_IDS(IDC_RIPPLE_AMPLITUDE),
                                    SLIDER_IDS(IDC_RIPPLE_WAVELENGTH),
                                    SLIDER_IDS(IDC_RIPPLE_PHASE),
                                    SLIDER_IDS(IDC_RIPPLE_ENERGY),
                                    IDC_RIPPLE_DISSIPATE,
                                    0};

}  // namespace

const EffectRecord kRippleEffect = {"Ripple", IDD_PANEL_RIPPLE, kControlIds, kControls, 7, Kernel, nullptr};

}  // namespace kfx
