// SPDX-License-Identifier: MIT
#include "kernels/implosion.h"

#include <algorithm>
#include <cmath>

#include "framework/cpu.h"
#include "framework/math/elementary.h"
#include "kernels/bilinear_sampler.h"
#include "kernels/math_rows.h"

namespace kfx {
namespace {

constexpr double kHalfPi = 1.5707963267948966;

// How many times as far from the centre each distance is sampled.
void ComputeFactors(const void* settings, const double* columnSquares, int32_t count, double rowSquare,
                    double* values, size_t) {
    const Pull& pull = *static_cast<const Pull*>(settings);
    for (int32_t k = 0; k < count; ++k)
        values[k] = std::sqrt(columnSquares[k] + rowSquare) * kHalfPi / pull.radius;
    SinRow(values, count, values);
    PowRow(values, pull.exponent, count, values);
    for (int32_t k = 0; rowSquare == 0 && k < count; ++k)
        if (columnSquares[k] == 0) values[k] = 1;
}

KFX_INLINE void LocateRun(const SampleRun& run) {
    const double* dx = run.columnOffsets;
    const int32_t* distance = run.distances;
    const double* factors = run.values;
    const double dy = run.rowOffset;
    double* __restrict x = run.x;
    double* __restrict y = run.y;
    // The look-ups have a loop of their own, so that the compiler vectorises the arithmetic.
    for (int32_t i = 0; i < run.count; ++i) x[i] = factors[distance[i]];
    for (int32_t i = 0; i < run.count; ++i) {
        const double factor = x[i];
        x[i] = factor * dx[i];
        y[i] = factor * dy;
    }
}

void LocatePulled(const SampleRun& run) { Fastest<LocateRun>()(run); }

// With s = sin(pi / 2 * d / radius), which is at least d / radius, and an exponent p between -1 and 1, the
// fourth derivative of s^p by the angle is no more than 57 s^(p - 4): the factors 24 + 18 + 8 + 4 + 2 + 1 of
// its terms, whose other parts are not above 1. An error of a factor moves a pixel d times as far along each
// axis. The polynomial that begins at d is made of values from d - h on, h being an interval, and used up to
// d + h; from four intervals on that is at most twice d - h.
EstimatePlan PlanPulled(const Pull& pull) {
    if (!(pull.radius >= 1) || std::fabs(pull.exponent) > 1) return {};
    const double intervals = std::clamp(std::floor(8 * pull.radius), 512.0, 4096.0);
    const double width = pull.radius / intervals;
    const double derivative = 57 * Pow(kHalfPi, 4) * Pow(pull.radius, -pull.exponent);
    const double reach = 2 * kCubicError * Pow(width, 4) * derivative / kPlaceError;
    const double from = width + Pow(reach, 1 / (3 - pull.exponent));
    // Where most would be left out anyway, a table of exact values serves better.
    if (!(from < pull.radius / 2)) return {};
    return {.intervals = static_cast<int32_t>(intervals), .from = std::max(from, 4 * width)};
}

}  // namespace

RegionDistortion MakeImplosion(const Pull& pull) {
    return {.centerX = 0,
            .centerY = 0,
            .radius = pull.radius,
            .compute = ComputeFactors,
            .valuesPerPixel = 1,
            .settings = &pull,
            .locate = LocatePulled,
            .plan = PlanPulled(pull),
            .key = nullptr,
            .keyBytes = 0};
}

ImageHandle ImplodePicture(ImageHandle source, double strength, int32_t centerX, int32_t centerY,
                           uint32_t background, KernelCache* cache) {
    const ImageLock from(source);
    if (!from) return nullptr;
    const int32_t width = from->width;
    const int32_t height = from->height;
    const double x = centerX / 100.0 * width;
    const double y = centerY / 100.0 * height;
    const Pull pull = {width >= height ? x : y, -strength};
    struct {
        int32_t numbers[4];
        double strength;
    } const key = {{width, height, centerX, centerY}, strength};
    RegionDistortion distortion = MakeImplosion(pull);
    distortion.centerX = x;
    distortion.centerY = y;
    distortion.key = &key;
    distortion.keyBytes = sizeof key;
    return DistortRegion(from.image, distortion, background, cache);
}

}  // namespace kfx
