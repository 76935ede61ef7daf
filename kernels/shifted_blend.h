// SPDX-License-Identifier: MIT
#pragma once

#include "framework/working_image.h"

namespace kfx {

// Writes row y of `to`: each pixel is the blend of four pixels of `from` at a place that lies `shifts[x]`
// pixels to the right and as many downwards, and at the border where it would lie outside. Neighbours beyond
// the right and the lower border are black. Any depth, the same for both; the arithmetic is in single
// precision.
void BlendShiftedRow(const WorkingImage* from, int32_t y, const double* shifts, WorkingImage* to);

}  // namespace kfx
