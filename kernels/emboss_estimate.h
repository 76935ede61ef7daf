// SPDX-License-Identifier: MIT
// An estimate for Emboss with a proven bound on its error.
#pragma once

#include "framework/working_image.h"

namespace kfx {

// Convolves a 24-bit picture with Emboss's matrix of n x n weights, n odd, made from a bell of spread
// `sigma`: a new image with the bytes of ConvolveImage. Null: these weights cancel so far that the bound is
// of no use, the picture is one that ConvolveImage refuses, or memory ran out; ConvolveImage then answers.
ImageHandle EmbossWithinBound(ImageHandle source, int32_t n, const double* matrix, double sigma);

}  // namespace kfx
