// SPDX-License-Identifier: MIT
#include "tests/reference/reference_table.h"

#include <cmath>

#include "framework/math/elementary.h"
#include "framework/memory_guards.h"

namespace kfx::test {

ImageHandle ReferenceRipple(ImageHandle source, const KernelInput& input) {
    const ImageLock from(source);
    if (input.values[3] == 0) return nullptr;  // waves without a length
    MemoryOwner owner(CreateLike(from.image));
    const ImageLock to(owner.memory);
    if (!to.image) return nullptr;
    const int32_t width = from.image->width, height = from.image->height;
    const double amp = input.values[2] / 100.0, wl = input.values[3] / 100.0;
    const double ph = input.values[4] / 100.0, en = input.values[5] / 100.0;
    const int64_t ox = int64_t{width} * (int64_t{input.values[0]} - 100) / 100;
    const int64_t oy = int64_t{height} * (int64_t{input.values[1]} - 100) / 100;
    const double cx = static_cast<double>(ox) + width * 0.5, cy = static_cast<double>(oy) + height * 0.5;
    const double far = std::sqrt((height - cy) * (height - cy) + (width - cx) * (width - cx));
    for (int32_t y = 0; y < height; ++y) {
        for (int32_t x = 0; x < width; ++x) {
            const double dx = x - cx, dy = y - cy;
            const double d = std::sqrt(dx * dx + dy * dy);
            double s = Sin(d / wl * 6.283185307179586 + ph) * amp;
            if (input.values[6]) s = s * (1.0 - d / (far + 0.0001)) * en;
            double sx = x + s, sy = y + s;
            if (sx < 0) sx = 0;
            if (sx > width - 1) sx = width - 1;
            if (sy < 0) sy = 0;
            if (sy > height - 1) sy = height - 1;
            const auto ix = static_cast<int32_t>(sx), iy = static_cast<int32_t>(sy);
            const auto fx = static_cast<float>(std::fmod(sx, 1.0)),
                       fy = static_cast<float>(std::fmod(sy, 1.0));
            const auto fetch = [&](int32_t column, int32_t row) {
                const bool inside = column >= 0 && column < width && row >= 0 && row < height;
                return inside ? GetDibPixel(from.image, column, row) : 0;
            };
            const uint32_t p00 = fetch(ix, iy), p10 = fetch(ix + 1, iy);
            const uint32_t p01 = fetch(ix, iy + 1), p11 = fetch(ix + 1, iy + 1);
            uint32_t value = 0;
            for (int shift = 0; shift < 32; shift += 8) {
                const auto c00 = static_cast<float>(p00 >> shift & 255),
                           c10 = static_cast<float>(p10 >> shift & 255);
                const auto c01 = static_cast<float>(p01 >> shift & 255),
                           c11 = static_cast<float>(p11 >> shift & 255);
                const float v = (c00 * (1 - fx) + c10 * fx) * (1 - fy) + (c01 * (1 - fx) + c11 * fx) * fy;
                value |= (static_cast<uint32_t>(v) & 255) << shift;
            }
            SetDibPixel(to.image, x, y, value);
        }
    }
    return owner.Release();
}

}  // namespace kfx::test
