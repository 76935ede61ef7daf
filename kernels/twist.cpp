// SPDX-License-Identifier: MIT
#include "kernels/twist.h"

#include <algorithm>
#include <cmath>

#include "framework/cpu.h"
#include "kernels/bilinear_sampler.h"
#include "kernels/math_rows.h"

namespace kfx {
namespace {

// Sines, then cosines of the angle at each distance.
void ComputeTurns(const void* settings, const double* columnSquares, int32_t count, double rowSquare,
                  double* values, size_t planeSize) {
    const Turn& turn = *static_cast<const Turn*>(settings);
    for (int32_t k = 0; k < count; ++k) {
        const double inward = 1 - std::sqrt(columnSquares[k] + rowSquare) / turn.radius;
        values[k] = inward * turn.angle * inward;
    }
    SinCosRow(values, count, values, values + planeSize);
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

// With the turn a (1 - d / radius)^2 and its derivatives g' and g'' by the distance d, the fourth derivative
// of its sine and cosine is no more than g'^4 + 6 g'^2 g'' + 3 g''^2. Errors of both move a pixel by the root
// of 2 times d at most along each axis.
EstimatePlan PlanTurned(const Turn& turn) {
    if (!(turn.radius >= 1)) return {};
    const double first = 2 * std::fabs(turn.angle) / turn.radius;
    const double second = first / turn.radius;
    const double derivative = first * first * (first * first + 6 * second) + 3 * second * second;
    const double width =
        std::sqrt(std::sqrt(kPlaceError / (kCubicError * derivative * std::sqrt(2.0) * turn.radius)));
    const double intervals = std::max(std::ceil(turn.radius / width), 256.0);
    if (!(intervals <= kMostIntervals)) return {};
    return {.intervals = static_cast<int32_t>(intervals), .from = 0};
}

}  // namespace

RegionDistortion MakeTwist(const Turn& turn) {
    return {.centerX = 0,
            .centerY = 0,
            .radius = turn.radius,
            .compute = ComputeTurns,
            .valuesPerPixel = 2,
            .settings = &turn,
            .locate = LocateTurned,
            .plan = PlanTurned(turn),
            .key = nullptr,
            .keyBytes = 0};
}

}  // namespace kfx
