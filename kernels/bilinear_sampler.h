// SPDX-License-Identifier: MIT
#pragma once

#include "framework/working_image.h"

namespace kfx {

// The colour at a point between pixels of a 24-bit picture, row 0 at the top. Everything is shifted by half a
// pixel to the right and down, so a whole-numbered point blends four pixels equally. Points outside, and
// neighbours outside, have the fallback colour (0x00BBGGRR), and so have points with a coordinate that is not
// a number.
uint32_t SampleBilinear(const WorkingImage* image, double x, double y, uint32_t fallback);

// The same for `count` points into consecutive 24-bit pixels.
void SampleRow(const WorkingImage* image, const double* x, const double* y, int32_t count, uint32_t fallback,
               uint8_t* out);

}  // namespace kfx
