// SPDX-License-Identifier: MIT
#pragma once

#include "framework/working_image.h"
#include "kernels/kept_points.h"

namespace kfx {

// The colour at a point between pixels of a 24-bit picture, row 0 at the top. Everything is shifted by half a
// pixel to the right and down, so a whole-numbered point blends four pixels equally. Points outside, and
// neighbours outside, have the fallback colour (0x00BBGGRR), and so have points with a coordinate that is not
// a number.
uint32_t SampleBilinear(const WorkingImage* image, double x, double y, uint32_t fallback);

// Writes the coordinates of some points of a row: of number points[i] into x[i] and y[i]. At most
// kMostLocated are asked for.
constexpr int32_t kMostLocated = 512;
using LocatePoints = void (*)(const void* context, const int32_t* points, int32_t count, double* x,
                              double* y);

// Estimated coordinates are off by no more than this, in pixels, or are not a number.
constexpr double kPlaceError = 9e-7;

struct PointRow {
    int32_t count;
    const double* x;  // estimates of all points; SampleRow() uses them, and only with AVX2
    const double* y;
    LocatePoints estimate;  // gives estimates; SampleKeptRow() uses it
    LocatePoints locate;    // gives the exact coordinates
    const void* context;
};

// The colours of a row of points into consecutive 24-bit pixels. Exact coordinates are asked for where the
// estimates do not decide: of three points in a thousand, and next to the picture's edges. What
// SampleKeptRow() needs of the points is written into `kept` and marked as filled, unless nothing is kept.
void SampleRow(const WorkingImage* image, const PointRow& row, uint32_t fallback, const KeptRow& kept,
               uint8_t* out);

// The same for a filled row. Estimates are asked for of a point in thirty. They must be those with which the
// row was filled.
void SampleKeptRow(const WorkingImage* image, const PointRow& row, uint32_t fallback, const KeptRow& kept,
                   uint8_t* out);

}  // namespace kfx
