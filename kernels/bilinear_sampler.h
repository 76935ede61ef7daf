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

// The same for `count` points into consecutive 24-bit pixels. What SampleKeptRow() needs of the points is
// written into `kept` and marked as filled, unless nothing is kept.
void SampleRow(const WorkingImage* image, const double* x, const double* y, int32_t count, uint32_t fallback,
               const KeptRow& kept, uint8_t* out);

// Writes the coordinates of some points of a row: of number points[i] into x[i] and y[i]. At most
// kMostLocated are asked for.
constexpr int32_t kMostLocated = 512;
using LocatePoints = void (*)(const void* context, const int32_t* points, int32_t count, double* x,
                              double* y);

// The same for the points of a filled row. Coordinates are asked for where what is kept does not decide: a
// point in forty, and those next to the picture's edges.
void SampleKeptRow(const WorkingImage* image, const KeptRow& kept, LocatePoints locate, const void* context,
                   int32_t count, uint32_t fallback, uint8_t* out);

}  // namespace kfx
