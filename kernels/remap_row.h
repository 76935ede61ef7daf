// SPDX-License-Identifier: MIT
// A row of full colour turned into palette indices.
#pragma once

#include "kernels/color_index.h"

namespace kfx {

// Writes the index of each of `width` 24-bit pixels, a byte a pixel.
void RemapRow(const uint8_t* from, int32_t width, ColorIndex* index, uint8_t* to);

}  // namespace kfx
