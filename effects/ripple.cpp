// SPDX-License-Identifier: MIT
// Ripple: sine waves round a centre. Each pixel is fetched from a place shifted by the wave's height there:
// equally far to the right and downwards, not along the radius. Waves that dissipate fall to zero at the
// distance of the lower right corner, even if another corner is farther away. Beyond that distance they
// change sign and grow again. The last column and the last row blend with black.
// The result is defined by the reference kernel; see docs/architecture.md.
#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

#include "effects/effects.h"
#include "framework/settings.h"
#include "kernels/math_rows.h"
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
                   double* values, size_t) {
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

// The place of a centre that is given in percent: 100 is the middle of the side, 0 and 200 lie half a picture
// outside.
double Center(int32_t size, int32_t percent) {
    const int64_t offset = size * (int64_t{percent} - 100) / 100;
    return static_cast<double>(offset) + size * 0.5;
}

// Takes pictures of any depth; with 8 bits and fewer, colour-table indices are blended like colours. A
// wavelength of 0 leaves the picture as it is.
ImageHandle ApplyRipple(ImageHandle source, const KernelInput& input) {
    const ImageLock from(source);
    if (!from || input.values[3] == 0) return nullptr;
    const int32_t width = from->width;
    const int32_t height = from->height;
    const double centerX = Center(width, input.values[0]);
    const double centerY = Center(height, input.values[1]);
    Wave wave = {};
    wave.height = input.values[2] / 100.0;
    wave.length = input.values[3] / 100.0;
    wave.phase = input.values[4] / 100.0;
    wave.energy = input.values[5] / 100.0;
    wave.dissipate = input.values[6] != 0;
    wave.reach = std::sqrt((height - centerY) * (height - centerY) + (width - centerX) * (width - centerX));

    NewImage to(CreateLike(from.image));
    const RadialAxis columns(width, centerX, 1);
    const RadialAxis rows(height, centerY, 1);
    const Scratch<double> fieldRow(static_cast<size_t>(width));
    const Scratch<double> shifts(static_cast<size_t>(width));
    if (!to || !columns.Ready() || !rows.Ready() || !fieldRow || !shifts) return nullptr;
    RadialField field = {.columns = &columns,
                         .rows = &rows,
                         .compute = ComputeShifts,
                         .settings = &wave,
                         .radius = std::numeric_limits<double>::infinity(),
                         .valuesPerPixel = 1,
                         .table = nullptr,
                         .row = fieldRow.address,
                         .found = false};
    struct {
        int32_t size[2];
        int32_t values[kMostControls];
    } key = {{width, height}, {}};
    std::copy(std::begin(input.values), std::end(input.values), key.values);
    KeepRadialField(&field, &input.cache->values, &key, sizeof key);
    const KeptPoints kept = field.found && CanKeepPlaces(from.image)
                                ? KeepPoints(&input.cache->points, &key, sizeof key, width, height)
                                : KeptPoints{};
    for (int32_t y = 0; y < height; ++y) {
        const ShiftedRow row = {.values = RadialRowAt(field, y), .distances = columns.distance.address};
        BlendShiftedRow(from.image, y, row, shifts.address, KeptRowAt(kept, y), to.image);
    }
    return to.Release();
}

constexpr auto kControls = MakeControls({
    Slider(IDC_RIPPLE_CENTER_X, &settings.style009CenterX, RIPPLE_CENTER_X_RANGE, RIPPLE_CENTER_X_CAPTION),
    Slider(IDC_RIPPLE_CENTER_Y, &settings.style009CenterY, RIPPLE_CENTER_Y_RANGE, RIPPLE_CENTER_Y_CAPTION),
    Slider(IDC_RIPPLE_AMPLITUDE, &settings.style009Amplitude, RIPPLE_AMPLITUDE_RANGE,
           RIPPLE_AMPLITUDE_CAPTION),
    Slider(IDC_RIPPLE_WAVELENGTH, &settings.style009Wavelength, RIPPLE_WAVELENGTH_RANGE,
           RIPPLE_WAVELENGTH_CAPTION),
    Slider(IDC_RIPPLE_PHASE, &settings.style009Phase, RIPPLE_PHASE_RANGE, RIPPLE_PHASE_CAPTION),
    Slider(IDC_RIPPLE_ENERGY, &settings.style009Energy, RIPPLE_ENERGY_RANGE, RIPPLE_ENERGY_CAPTION),
    CheckBox(IDC_RIPPLE_DISSIPATE, &settings.style009Dissipate, RIPPLE_DISSIPATE_TEXT),
});

}  // namespace

const Effect kRipple = {
    .name = "Ripple", .panel = IDD_PANEL_RIPPLE, .controls = kControls, .apply = ApplyRipple};

}  // namespace kfx
