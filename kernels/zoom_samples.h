// SPDX-License-Identifier: MIT
// The samples of Zoom Blur: for each pixel the places that lie step by step nearer to the picture's centre.
#pragma once

#include "framework/working_image.h"
#include "kernels/packed_sums.h"

namespace kfx {

// Where the samples of one axis lie: for each coordinate the places of its `cycles` samples, and how many of
// them are taken before one lies outside. A pixel takes the smaller number of its column's and its row's.
struct ZoomAxis {
    int32_t* places;
    int32_t* counts;
};

// What makes a place out of a coordinate: offsets in bytes for 24-bit rows, the coordinate itself otherwise.
struct ZoomScale {
    int32_t origin;
    int32_t step;
};

// Fills the axis of a side of `size` pixels. Sample i lies `displacement` * i hundredths of a percent nearer
// to the middle.
void FillZoomAxis(int32_t size, int32_t displacement, int32_t cycles, const ZoomScale& scale,
                  const ZoomAxis& axis);

// Writes one row of averages of a 24-bit image. `columns` and `rows`, the row's own places, are offsets in
// bytes; `rowCount` of the latter are inside.
void AverageZoomRow(const WorkingImage* from, const ZoomAxis& columns, const int32_t* rows, int32_t rowCount,
                    int32_t cycles, const Reciprocals& reciprocals, uint8_t* out);

// The same for row y of an image of any depth; places are coordinates.
void AverageZoomRowOfAnyDepth(const WorkingImage* from, const ZoomAxis& columns, const int32_t* rows,
                              int32_t rowCount, int32_t cycles, WorkingImage* to, int32_t y);

}  // namespace kfx
