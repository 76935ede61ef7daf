// SPDX-License-Identifier: MIT
#include "tests/reference/reference_table.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "framework/math/elementary.h"
#include "framework/memory_guards.h"

namespace kfx::test {

ImageHandle ReferenceRadialBlur(ImageHandle source, const KernelInput& input) {
    const int32_t angle = std::clamp(input.values[0], -360, 360);  // the product knows no longer arc
    const ImageLock from(source);
    const int32_t width = from.image->width, height = from.image->height;
    const double cx = width * 0.5, cy = height * 0.5;
    const double R = std::sqrt(cx * cx + cy * cy);
    const double a = angle * 3.141592653589793 / 180.0;
    const auto N = static_cast<int32_t>(std::fabs(std::sqrt(R) * (a * 4.0) + 2.0));
    if (N < 2) return nullptr;
    const double step = a / (N - 1);
    std::vector<double> cosines(static_cast<size_t>(N)), sines(static_cast<size_t>(N));
    for (int32_t i = 0; i < N; ++i) {
        const double theta = i * step - (N - 1) * step * 0.5;
        cosines[static_cast<size_t>(i)] = Cos(theta);
        sines[static_cast<size_t>(i)] = Sin(theta);
    }
    MemoryOwner owner(CreateLike(from.image));
    const ImageLock to(owner.memory);
    if (!to.image) return nullptr;
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x) SetDibPixel(to.image, x, y, GetDibPixel(from.image, x, y));

    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x) {
            const double dx = x - cx, dy = y - cy, d = std::sqrt(dx * dx + dy * dy);
            int32_t s = 1;
            if (d != 0) {
                const auto q = static_cast<int32_t>(R / d);
                s = q == 0 ? 1 : q >= N ? N - 1 : q;
            }
            uint32_t sum0 = 0, sum1 = 0, sum2 = 0, count = 0;
            for (int32_t i = 0; i < N; i += s) {
                const double cosine = cosines[static_cast<size_t>(i)], sine = sines[static_cast<size_t>(i)];
                const auto column = static_cast<int32_t>(cosine * dx + cx - sine * dy + 0.5);
                const auto row = static_cast<int32_t>(sine * dx + cy + cosine * dy + 0.5);
                uint32_t pixel = GetDibPixel(to.image, column, row);
                if (pixel == 0xFFFFFFFF) pixel = input.background;
                sum0 += pixel & 255;
                sum1 += pixel >> 8 & 255;
                sum2 += pixel >> 16 & 255;
                ++count;
            }
            if (count > 0)
                SetDibPixel(to.image, x, y, sum0 / count | (sum1 / count) << 8 | (sum2 / count) << 16);
        }
    return owner.Release();
}

}  // namespace kfx::test
