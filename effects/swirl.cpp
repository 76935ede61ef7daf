// SPDX-License-Identifier: MIT
// Swirl: the ellipse that touches the picture's edges is twisted about the centre, most in the middle and not
// at all at its rim. The slider runs from 0 to 2880 for -1440 to +1440 degrees.
// The result is defined by the reference kernel; see docs/architecture.md.
#include <cmath>

#include "effects/effects.h"
#include "framework/cpu.h"
#include "framework/settings.h"
#include "kernels/math_rows.h"
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
    const double* dx = run.columnOffsets;
    const int32_t* distance = run.distances;
    const double* sines = run.values;
    const double* cosines = run.values + run.valueCount;
    const double dy = run.rowOffset;
    double* __restrict x = run.x;
    double* __restrict y = run.y;
    // The look-ups have a loop of their own, so that the compiler vectorises the arithmetic.
    for (int32_t i = 0; i < run.count; ++i) {
        x[i] = sines[distance[i]];
        y[i] = cosines[distance[i]];
    }
    for (int32_t i = 0; i < run.count; ++i) {
        const double s = x[i];
        const double c = y[i];
        x[i] = c * dx[i] - s * dy;
        y[i] = s * dx[i] + c * dy;
    }
}

void LocateTurned(const SampleRun& run) { Fastest<LocateRun>()(run); }

ImageHandle ApplySwirl(ImageHandle source, const KernelInput& input) {
    const ImageLock from(source);
    if (!from) return nullptr;
    const int32_t width = from->width;
    const int32_t height = from->height;
    // In 32 bits with wrap-around: a file may hold any number.
    const auto degrees = static_cast<int32_t>(static_cast<uint32_t>(input.values[0]) - kNoTurn);
    const Turn turn = {(width > height ? width : height) * 0.5, degrees * kPi / 180};
    const int32_t key[] = {width, height, input.values[0]};
    const RegionDistortion distortion = {.centerX = width * 0.5,
                                         .centerY = height * 0.5,
                                         .radius = turn.radius,
                                         .compute = ComputeTurns,
                                         .valuesPerPixel = 2,
                                         .settings = &turn,
                                         .locate = LocateTurned,
                                         .key = key,
                                         .keyBytes = sizeof key};
    return DistortRegion(from.image, distortion, input.background, input.cache);
}

constexpr auto kControls = MakeControls({
    Slider(IDC_SWIRL_ANGLE, &settings.style015Angle, SWIRL_ANGLE_RANGE, SWIRL_ANGLE_CAPTION),
});

}  // namespace

const Effect kSwirl = {.name = "Swirl", .panel = IDD_PANEL_SWIRL, .controls = kControls, .apply = ApplySwirl};

}  // namespace kfx
