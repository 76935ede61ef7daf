// SPDX-License-Identifier: MIT
// An estimate for Emboss with a proven bound on its error.
#pragma once

#include "framework/working_image.h"

namespace kfx {

// Convolves a 24-bit picture with Emboss's matrix of n x n weights, n odd, made from a bell of spread
// `sigma`: a new image with the bytes of ConvolveImage. Null: the weights cancel so far that the bound is too
// large, ConvolveImage would refuse the picture, or memory ran out. The caller then takes ConvolveImage.
ImageHandle EmbossWithinBound(ImageHandle source, int32_t n, const double* matrix, double sigma);

}  // namespace kfx
