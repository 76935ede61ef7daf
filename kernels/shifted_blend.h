// SPDX-License-Identifier: MIT
#pragma once

#include "framework/working_image.h"
#include "kernels/kept_points.h"

namespace kfx {

// The shift of pixel x is values[distances[x]].
struct ShiftedRow {
    const double* values;
    const int32_t* distances;
};

// Whether BlendShiftedRow() keeps places of pictures like this one: 24 bits deep, at least two pixels on each
// side.
bool CanKeepPlaces(const WorkingImage* from);

// Writes row y of `to`: each pixel is the blend of four pixels of `from` at a place that lies its shift to
// the right and as far downwards, and at the border where it would lie outside. Neighbours beyond the right
// and the lower border are black. Any depth, the same for both; the arithmetic is in single precision.
// `shifts` has room for one row. The places of a filled row are `kept`'s, those of another one are written
// there.
void BlendShiftedRow(const WorkingImage* from, int32_t y, const ShiftedRow& row, double* shifts,
                     const KeptRow& kept, WorkingImage* to);

}  // namespace kfx
