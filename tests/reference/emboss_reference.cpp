// SPDX-License-Identifier: MIT
#include "tests/reference/reference_table.h"

#include <vector>

#include "framework/math/elementary.h"
#include "framework/memory_guards.h"

namespace kfx::test {
namespace {

uint32_t ToByte(double value) {
    if (value < 0) return 0;
    if (value > 255) return 255;
    return static_cast<uint32_t>(value + 0.5);
}

int32_t Wrap(int32_t coordinate, int32_t size) {
    if (coordinate < 0) return coordinate + size;
    return coordinate >= size ? coordinate - size : coordinate;
}

}  // namespace

ImageHandle ReferenceEmboss(ImageHandle source, const KernelInput& input) {
    const int32_t radius = input.values[0];
    const int32_t depth = input.values[1];
    const ImageLock from(source);
    const int32_t width = from.image->width, height = from.image->height;
    if (depth < 0 || depth > 16000) return nullptr;
    const int32_t n = depth % 2 == 0 ? depth + 1 : depth;
    const int32_t h = n / 2;
    if (width < n || height < n) return nullptr;
    const double sigma = radius / 10.0;
    const auto side = static_cast<size_t>(n);
    std::vector<double> matrix(side * side);
    size_t entry = 0;
    for (int32_t ky = -h; ky <= h; ++ky)
        for (int32_t kx = -h; kx <= h; ++kx, ++entry) {
            double w = Exp(-(kx * kx + ky * ky) / (sigma * sigma));
            w *= kx >= 0 && ky >= 0 ? 8.0 : -8.0;
            if (kx == -ky) w = 0;
            matrix[entry] = w;
        }
    double sum = 0;
    for (const double weight : matrix) sum += weight;

    MemoryOwner owner(CreateLike(from.image));
    const ImageLock to(owner.memory);
    if (!to.image) return nullptr;
    for (int32_t r = 0; r < height; ++r)
        for (int32_t x = 0; x < width; ++x) {
            double red = 0, green = 0, blue = 0;
            for (int32_t i = 0; i < n; ++i)
                for (int32_t j = 0; j < n; ++j) {
                    const int32_t row = Wrap(r - h + i, height);
                    const uint32_t pixel = GetDibPixel(from.image, Wrap(x - h + j, width), height - 1 - row);
                    const double weight = matrix[static_cast<size_t>(i) * side + static_cast<size_t>(j)];
                    red += weight * RedOf(pixel);
                    green += weight * GreenOf(pixel);
                    blue += weight * BlueOf(pixel);
                }
            if (sum != 0 && sum != 1) {
                red /= sum;
                green /= sum;
                blue /= sum;
            }
            SetDibPixel(to.image, x, height - 1 - r, Rgb(ToByte(red), ToByte(green), ToByte(blue)));
        }
    return owner.Release();
}

}  // namespace kfx::test
