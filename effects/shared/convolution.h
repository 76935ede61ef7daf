// SPDX-License-Identifier: MIT
#pragma once

#include "framework/working_image.h"

namespace kfx {

// Convolves a 24-bit picture with `n` x `n` weights in row-major order, n odd; matrix rows run over stored
// rows, bottom up. The border wraps around. Sums other than 0 and 1 divide the result. A new image, or null:
// n even, the picture smaller than n on a side, not 24 bits, or memory ran out.
ImageHandle ConvolveImage(ImageHandle source, int32_t n, const double* matrix);

}  // namespace kfx
