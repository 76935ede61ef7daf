// SPDX-License-Identifier: MIT
// Rows of 3 x 3 filters, in the fastest form that this processor runs.
#pragma once

#include "kernels/neighbor_filter.h"

namespace kfx {

// Relief lit from the upper left; sums are clamped to a byte. The weights, row by row from the top:
//   -1 -1  0
//   -1  1  1
//    0  1  1
NeighborRowFilter ReliefRow();

// The length of the gradient divided by 1.8, truncated and clamped to a byte: vertical and horizontal
// differences of three neighbours each.
NeighborRowFilter GradientRow();

}  // namespace kfx
