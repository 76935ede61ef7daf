// SPDX-License-Identifier: MIT
// A distortion's values at any distance from its centre, estimated: cubic polynomials through exact values at
// evenly spaced distances. An estimate costs a tenth of a sine and a power. Where a byte could depend on the
// difference, the kernel computes the exact value.
#pragma once

#include "framework/kernel_cache.h"
#include "kernels/radial_field.h"

namespace kfx {

// Between which distances the estimate may be used, and with how many polynomials. The first interval never
// has one, and beyond the region's rim nothing is promised.
struct EstimatePlan {
    int32_t intervals;  // between the centre and the region's rim, 0: none will do
    double from;        // pixels from the centre; nearer to it values change too fast
};

// The error of a cubic polynomial through four values that are one interval apart, between the two in the
// middle: at most this times the fourth power of the interval times the greatest fourth derivative.
constexpr double kCubicError = 9.0 / 16 / 24;
constexpr int32_t kMostIntervals = 8192;

struct RadialEstimate {
    const double* polynomials;  // plane after plane, four coefficients each; null: there are none
    int32_t intervals;
    double perPixel;  // intervals
    bool found;       // the polynomials are an earlier frame's
};

// Whether a plan is followed in a picture of so many pixels: not without AVX2, nor where the polynomials
// would be more than the pixels.
bool IsEstimated(const EstimatePlan& plan, int64_t pixels);

// Polynomials for `valuesPerPixel` planes of values, as `compute` gives them for a region with this radius.
// None where the plan is not followed, or without memory.
RadialEstimate KeepRadialEstimate(const EstimatePlan& plan, RadialRow compute, const void* settings,
                                  size_t valuesPerPixel, double radius, int64_t pixels, KeptTable* kept,
                                  const void* key, size_t keyBytes);

// The estimates for `count` squared column offsets and a squared row offset: a plane of values, and further
// ones behind it at a distance of `planeSize`. No number (NaN) where the plan leaves the distance out. Needs
// AVX2.
void EstimateRow(const RadialEstimate& estimate, size_t valuesPerPixel, const double* columnSquares,
                 int32_t count, double rowSquare, double* values, size_t planeSize);

}  // namespace kfx
