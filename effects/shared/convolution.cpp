// SPDX-License-Identifier: MIT
#include "effects/shared/convolution.h"

#include "framework/memory_guards.h"

namespace kfx {
namespace {

int32_t Wrap(int32_t coordinate, int32_t size) {
    if (coordinate < 0) return coordinate + size;
    return coordinate >= size ? coordinate - size : coordinate;
}

uint8_t ToByte(double value) {
    if (value < 0) return 0;
    if (value > 255) return 255;
    return static_cast<uint8_t>(value + 0.5);
}

// One result row. `rows` are the n source rows under the matrix, `columns` the byte offset of each source
// column from -n/2 to width + n/2, both already wrapped around.
void ConvolveRow(const uint8_t* const* rows, const size_t* columns, int32_t n, const double* matrix,
                 double divisor, int32_t width, uint8_t* out) {
    for (int32_t x = 0; x < width; ++x, out += 3) {
        double blue = 0, green = 0, red = 0;
        const double* weight = matrix;
        for (int32_t i = 0; i < n; ++i) {
            for (int32_t j = 0; j < n; ++j, ++weight) {
                const uint8_t* pixel = rows[i] + columns[x + j];
                blue += *weight * pixel[0];
                green += *weight * pixel[1];
                red += *weight * pixel[2];
            }
        }
        out[0] = ToByte(blue / divisor);
        out[1] = ToByte(green / divisor);
        out[2] = ToByte(red / divisor);
    }
}

}  // namespace

ImageHandle ConvolveImage(ImageHandle source, int32_t n, const double* matrix) {
    const ImageLock from(source);
    if (!from.image || from.image->bitCount != 24) return nullptr;
    const int32_t width = from.image->width;
    const int32_t height = from.image->height;
    if (n < 1 || n % 2 == 0 || width < n || height < n) return nullptr;
    MemoryOwner owner(CreateLike(from.image));
    const ImageLock to(owner.memory);
    const Scratch<const uint8_t*> rows(static_cast<size_t>(n));
    const Scratch<size_t> columns(static_cast<size_t>(width) + static_cast<size_t>(n));
    if (!to.image || !rows.address || !columns.address) return nullptr;

    double sum = 0;
    for (int32_t i = 0; i < n * n; ++i) sum += matrix[i];
    // Dividing by 1 changes no value, so one loop serves both cases.
    const double divisor = sum == 0 ? 1 : sum;
    const int32_t half = n / 2;
    for (int32_t j = 0; j < width + n - 1; ++j)
        columns.address[j] = 3 * static_cast<size_t>(Wrap(j - half, width));
    for (int32_t r = 0; r < height; ++r) {
        for (int32_t i = 0; i < n; ++i) rows.address[i] = StoredRow(from.image, Wrap(r - half + i, height));
        ConvolveRow(rows.address, columns.address, n, matrix, divisor, width, StoredRow(to.image, r));
    }
    return owner.Release();
}

}  // namespace kfx
