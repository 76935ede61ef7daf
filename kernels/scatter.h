// SPDX-License-Identifier: MIT
// Pixels taken from random places near them, for Water Drops.
#pragma once

#include "framework/working_image.h"

namespace kfx {

// Up to this aperture a row of a 24-bit picture is scattered in lanes.
constexpr int32_t kLargestQuickAperture = 4096;

// Writes row y of `to`, an image like `from`. Each pixel comes from up to `aperture` / 2 pixels to the left
// and above, one less to the right and below for even apertures. If that place lies outside, the pixel keeps
// its own value. `numbers` holds two random numbers of 15 bits a pixel, first the column's, then the row's;
// `offsets` is working space for a row. `aperture` is at least 1.
void ScatterRow(const WorkingImage* from, int32_t y, const uint16_t* numbers, int32_t aperture,
                int32_t* offsets, WorkingImage* to);

}  // namespace kfx
