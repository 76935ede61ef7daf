// SPDX-License-Identifier: MIT
// Swirl: the ellipse that touches the picture's edges is twisted about the centre, most in the middle and not
// at all at its rim. The slider runs from 0 to 2880 for -1440 to +1440 degrees.
#include "effects/swirl.h"

#include <cmath>

#include "framework/cpu.h"
#include "framework/math/elementary.h"
#include "framework/settings.h"
#include "kernels/region_distortion.h"
#include "resources/panel_controls.h"

namespace kfx {
namespace {

constexpr int32_t kNoTurn = 1440;  // the slider's position for 0 degrees
constexpr double kPi = 3.141592653589793;

struct Turn {
    double radius;  // pixels
    double angle;   // radians, at the centre
};

// Sines, then cosines of the angle at each distance.
void ComputeTurns(const void* settings, const double* columnSquares, int32_t count, double rowSquare,
                  double* values) {
    const Turn& turn = *static_cast<const Turn*>(settings);
    const DistanceRun run = DistancesWithin(turn.radius, columnSquares, count, rowSquare);
    for (int32_t k = run.first; k < run.end; ++k) {
        const double inward = 1 - std::sqrt(columnSquares[k] + rowSquare) / turn.radius;
        values[k] = inward * turn.angle * inward;
    }
    double* within = values + run.first;
    SinCosRow(within, run.end - run.first, within, within + count);
}

KFX_INLINE void LocateRun(const SampleRun& run) {
    const double* dx = run.columns->offset.address + run.first;
    const int32_t* distance = run.columns->distance.address + run.first;
    const double* sines = run.values;
    const double* cosines = run.values + run.columns->distinct;
    const double dy = run.rowOffset, scaleX = run.scaleX, scaleY = run.scaleY;
    const double centerX = run.centerX, centerY = run.centerY;
    double* __restrict x = run.x;
    double* __restrict y = run.y;
    // Looked up apart from the arithmetic, so that the latter is done in lanes.
    for (int32_t i = 0; i < run.count; ++i) {
        x[i] = sines[distance[i]];
        y[i] = cosines[distance[i]];
    }
    for (int32_t i = 0; i < run.count; ++i) {
        const double s = x[i];
        const double c = y[i];
        x[i] = (c * dx[i] - s * dy) / scaleX + centerX;
        y[i] = (s * dx[i] + c * dy) / scaleY + centerY;
    }
}

KFX_AVX2 void LocateRunAvx2(const SampleRun& run) { LocateRun(run); }

void LocateTurned(const SampleRun& run) { UseAvx2() ? LocateRunAvx2(run) : LocateRun(run); }

}  // namespace

ImageHandle ApplySwirl(ImageHandle source, int32_t position, uint32_t background, KernelCache* cache) {
    const ImageLock from(source);
    if (!from.image) return nullptr;
    const int32_t width = from.image->width;
    const int32_t height = from.image->height;
    // In 32 bits with wrap-around, as far as numbers from a file may stray.
    const auto degrees = static_cast<int32_t>(static_cast<uint32_t>(position) - kNoTurn);
    const Turn turn = {(width > height ? width : height) * 0.5, degrees * kPi / 180};
    const int32_t key[] = {width, height, position};
    const RegionDistortion distortion = {width * 0.5, height * 0.5, turn.radius, ComputeTurns, 2,
                                         &turn,       LocateTurned, key,         sizeof key};
    return DistortRegion(from.image, distortion, background, cache);
}

namespace {

ImageHandle Kernel(ImageHandle source, const KernelInput& input) {
    return ApplySwirl(source, input.values[0], input.background, input.cache);
}

constexpr EffectControl kControls[] = {
    {ControlKind::Slider, IDC_SWIRL_ANGLE, &settings.style015Angle, SWIRL_ANGLE_RANGE},
};
constexpr uint32_t kControlIds[] = {SLIDER_IDS(IDC_SWIRL_ANGLE), 0};

}  // namespace

const EffectRecord kSwirlEffect = {"Swirl", IDD_PANEL_SWIRL, kControlIds, kControls, 1, Kernel, nullptr};

}  // namespace kfx
