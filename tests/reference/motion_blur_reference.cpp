// SPDX-License-Identifier: MIT
#include "tests/reference/reference_table.h"

#include <cmath>
#include <vector>

#include "framework/math/elementary.h"
#include "framework/memory_guards.h"

namespace kfx::test {
namespace {

std::vector<double> BuildWeights(int32_t n, double sigma) {
    if (n < 1) n = 3;
    std::vector<double> weights(static_cast<size_t>(n));
    for (int32_t j = 0; j < 3 * n; ++j) {
        const double square = static_cast<double>(j) * j;
        weights[static_cast<size_t>(j / 3)] += Exp(-square / (18 * sigma * sigma));
    }
    double sum = 0;
    for (const double weight : weights) sum += weight;
    for (double& weight : weights) weight /= sum;
    return weights;
}

}  // namespace

ImageHandle ReferenceMotionBlur(ImageHandle source, const KernelInput& input) {
    const int32_t radius = input.values[1];
    const double sigma = input.values[0];
    const ImageLock from(source);
    if (sigma == 0 || radius > 16383) return nullptr;
    const int32_t width = from.image->width, height = from.image->height;
    MemoryOwner owner(CreateLike(from.image));
    const ImageLock to(owner.memory);
    if (!to.image) return nullptr;

    std::vector<double> weights;
    if (radius > 0) {
        weights = BuildWeights(2 * radius + 1, sigma);
    } else {
        int32_t n = 3;
        weights = BuildWeights(n, sigma);
        std::vector<double> previous = weights;
        while (static_cast<int32_t>(255 * weights.back()) > 0) {
            previous = weights;
            n += 2;
            weights = BuildWeights(n, sigma);
        }
        weights = previous;
    }
    const auto n = static_cast<int32_t>(weights.size());
    const double a = input.values[2] * 3.141592653589793 / 180;
    const auto sx = static_cast<int32_t>(Sin(a) * n);
    const auto sy = static_cast<int32_t>(Cos(a) * n);
    const double L = std::sqrt(static_cast<double>(int64_t{sx} * sx + int64_t{sy} * sy));
    for (int32_t r = 0; r < height; ++r)
        for (int32_t x = 0; x < width; ++x) {
            double red = 0, green = 0, blue = 0;
            for (int32_t i = 0; i < n; ++i) {
                const auto dx = static_cast<int32_t>(i * sx / L);
                const auto dy = static_cast<int32_t>(i * sy / L);
                uint32_t sample = GetDibPixel(from.image, x + dx, height - (r + dy) - 1);
                if (sample == kNoPixel) sample = input.background;
                const double weight = weights[static_cast<size_t>(i)];
                red += weight * (sample & 255);
                green += weight * (sample >> 8 & 255);
                blue += weight * (sample >> 16 & 255);
            }
            SetDibPixel(
                to.image, x, height - 1 - r,
                Rgb(static_cast<uint32_t>(red), static_cast<uint32_t>(green), static_cast<uint32_t>(blue)));
        }
    return owner.Release();
}

}  // namespace kfx::test
