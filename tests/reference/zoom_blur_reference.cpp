// SPDX-License-Identifier: MIT
#include "tests/reference/reference_table.h"

#include <algorithm>
#include <cmath>

#include "framework/memory_guards.h"

namespace kfx::test {

ImageHandle ReferenceZoomBlur(ImageHandle source, const KernelInput& input) {
    const int32_t cycles = std::min(input.values[1], 256);  // the product takes no more
    const ImageLock from(source);
    MemoryOwner owner(CreateLike(from.image));
    const ImageLock to(owner.memory);
    if (!to.image) return nullptr;
    const int32_t hw = from.image->width / 2, hh = from.image->height / 2;
    const auto p = static_cast<float>(input.values[0] / 100.0);
    for (int32_t y = 0; y < from.image->height; ++y)
        for (int32_t x = 0; x < from.image->width; ++x) {
            if (cycles <= 0) {
                SetDibPixel(to.image, x, y, GetDibPixel(from.image, x, y));
                continue;
            }
            int32_t sum0 = 0, sum1 = 0, sum2 = 0, count = 0;
            for (int32_t i = 0; i < cycles; ++i, ++count) {
                double sx = x, sy = y;
                if (i > 0) {
                    const float product = static_cast<float>(i) * p;
                    const double f = 1.0 - product / 100.0;
                    sx = std::trunc((static_cast<float>(x) - static_cast<float>(hw)) * f + hw);
                    sy = std::trunc((static_cast<float>(y) - static_cast<float>(hh)) * f + hh);
                }
                if (sx < 0 || sy < 0 || sx >= from.image->width || sy >= from.image->height) break;
                const uint32_t pixel =
                    GetDibPixel(from.image, static_cast<int32_t>(sx), static_cast<int32_t>(sy));
                sum0 += static_cast<int32_t>(pixel & 255);
                sum1 += static_cast<int32_t>(pixel >> 8 & 255);
                sum2 += static_cast<int32_t>(pixel >> 16 & 255);
            }
            const auto channel = [count](int32_t sum) {
                return static_cast<uint32_t>(std::clamp(sum / count, 0, 255));
            };
            SetDibPixel(to.image, x, y, Rgb(channel(sum0), channel(sum1), channel(sum2)));
        }
    return owner.Release();
}

}  // namespace kfx::test
