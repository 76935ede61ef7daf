// SPDX-License-Identifier: MIT
#include "kernels/implosion.h"

#include <cmath>

#include "framework/cpu.h"
#include "kernels/math_rows.h"
#include "kernels/region_distortion.h"

namespace kfx {
namespace {

constexpr double kHalfPi = 1.5707963267948966;

struct Pull {
    double radius;  // pixels
    double exponent;
};

// How many times as far from the centre each distance is sampled.
void ComputeFactors(const void* settings, const double* columnSquares, int32_t count, double rowSquare,
                    double* values) {
    const Pull& pull = *static_cast<const Pull*>(settings);
    const DistanceRun run = DistancesWithin(pull.radius, columnSquares, count, rowSquare);
    for (int32_t k = run.first; k < run.end; ++k)
        values[k] = std::sqrt(columnSquares[k] + rowSquare) * kHalfPi / pull.radius;
    double* within = values + run.first;
    SinRow(within, run.end - run.first, within);
    PowRow(within, pull.exponent, run.end - run.first, within);
    for (int32_t k = run.first; rowSquare == 0 && k < run.end; ++k)
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

}  // namespace

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
    const RegionDistortion distortion = {x,    y,         pull.radius, ComputeFactors, 1, &pull, LocatePulled,
                                         &key, sizeof key};
    return DistortRegion(from.image, distortion, background, cache);
}

}  // namespace kfx
