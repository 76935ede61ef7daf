// SPDX-License-Identifier: MIT
#pragma once

#include "framework/working_image.h"

namespace kfx {

// Convolves a 24-bit picture with `n` x `n` weights in row-major order, n odd; matrix rows run over stored
// rows, bottom up. The border wraps around. The result is divided by the sum of the weights, unless that is
// 0. A new image, or null: n even, the picture smaller than n on a side, not 24 bits, or memory ran out.
ImageHandle ConvolveImage(ImageHandle source, int32_t n, const double* matrix);

// The same for the pixel at column x of stored row r of a picture that ConvolveImage would take; blue, green,
// red. `divisor` is MatrixDivisor of the matrix.
void ConvolvePixel(const WorkingImage* source, int32_t n, const double* matrix, double divisor, int32_t x,
                   int32_t r, uint8_t out[3]);

// What sums are divided by: the sum of the weights, or 1 when that is 0.
double MatrixDivisor(int32_t n, const double* matrix);

// A coordinate at most `size` outside 0 .. size - 1, brought inside.
inline int32_t WrapCoordinate(int32_t coordinate, int32_t size) {
    if (coordinate < 0) return coordinate + size;
    return coordinate >= size ? coordinate - size : coordinate;
}

}  // namespace kfx
