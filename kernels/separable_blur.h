// SPDX-License-Identifier: MIT
// The fast form of Gaussian Blur's two passes for 24-bit pictures.
#pragma once

#include "framework/working_image.h"

namespace kfx {

// Blurs rows, then columns, of a locked 24-bit image with n weights, n not above either side, into an image
// of the same size. False: memory ran out, the result is not to be used.
bool BlurRowsAndColumns(const WorkingImage* from, WorkingImage* to, const float* weights, int32_t n);

}  // namespace kfx
