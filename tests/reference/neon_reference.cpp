// SPDX-License-Identifier: MIT
#include "tests/reference/reference_table.h"

#include <algorithm>
#include <cmath>

#include "framework/memory_guards.h"

namespace kfx::test {

ImageHandle ReferenceNeon(ImageHandle source, const KernelInput&) {
    static const float kVertical[3][3] = {{-1, -1, -1}, {0, 0, 0}, {1, 1, 1}};
    static const float kHorizontal[3][3] = {{-1, 0, 1}, {-1, 0, 1}, {-1, 0, 1}};
    const ImageLock from(source);
    MemoryOwner owner(CreateLike(from.image));
    const ImageLock to(owner.memory);
    if (!to.image) return nullptr;
    const int32_t w = from.image->width, h = from.image->height;
    for (int32_t y = 0; y < h; ++y) {
        for (int32_t x = 0; x < w; ++x) {
            int32_t v[3] = {}, g[3] = {};
            for (int32_t dy = -1; dy <= 1; ++dy) {
                for (int32_t dx = -1; dx <= 1; ++dx) {
                    const int32_t row = y + dy < 0 || y + dy > h - 1 ? y : y + dy;
                    const int32_t column = x + dx < 0 || x + dx > w - 1 ? x : x + dx;
                    const uint32_t pixel = GetDibPixel(from.image, column, row);
                    for (int c = 0; c < 3; ++c) {
                        const auto value = static_cast<float>(pixel >> 8 * c & 255);
                        v[c] += static_cast<int32_t>(value * kVertical[dy + 1][dx + 1]);
                        g[c] += static_cast<int32_t>(value * kHorizontal[dy + 1][dx + 1]);
                    }
                }
            }
            uint32_t out[3];
            for (int c = 0; c < 3; ++c) {
                const double length = std::sqrt(static_cast<double>(g[c] * g[c] + v[c] * v[c])) / 1.8;
                out[c] = static_cast<uint32_t>(std::clamp(static_cast<int32_t>(length), 0, 255));
            }
            SetDibPixel(to.image, x, y, Rgb(out[0], out[1], out[2]));
        }
    }
    return owner.Release();
}

}  // namespace kfx::test
