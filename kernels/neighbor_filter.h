// SPDX-License-Identifier: MIT
// The 3 x 3 neighbourhood that Bump and Neon share: a neighbour outside the picture is replaced by the centre
// pixel's own row or column, each coordinate by itself.
#pragma once

#include "framework/working_image.h"

namespace kfx {

// Computes `bytes` result bytes of one row. The three rows begin one pixel to the left of the result: for the
// byte at out[s], the same channel stands at [s] left of the pixel, at [s + 3] in its own column and at [s +
// 6] right of it.
using NeighborRowFilter = void (*)(const uint8_t* above, const uint8_t* centre, const uint8_t* below,
                                   size_t bytes, uint8_t* out);

// A new picture made row by row from a 24-bit picture. Null: another depth, or memory ran out.
ImageHandle FilterNeighbors(ImageHandle source, NeighborRowFilter filter);

}  // namespace kfx
