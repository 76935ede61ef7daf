// SPDX-License-Identifier: MIT
#include "tests/reference/reference_table.h"

#include <algorithm>

#include "framework/memory_guards.h"

namespace kfx::test {

ImageHandle ReferenceBump(ImageHandle source, const KernelInput&) {
    static const float kKernel[3][3] = {{-1, -1, 0}, {-1, 1, 1}, {0, 1, 1}};
    const ImageLock from(source);
    MemoryOwner owner(CreateLike(from.image));
    const ImageLock to(owner.memory);
    if (!to.image) return nullptr;
    const int32_t w = from.image->width, h = from.image->height;
    for (int32_t y = 0; y < h; ++y) {
        for (int32_t x = 0; x < w; ++x) {
            float red = 0, green = 0, blue = 0;
            for (int32_t dy = -1; dy <= 1; ++dy) {
                for (int32_t dx = -1; dx <= 1; ++dx) {
                    const float weight = kKernel[dy + 1][dx + 1];
                    if (weight == 0) continue;
                    const int32_t row = y + dy < 0 || y + dy > h - 1 ? y : y + dy;
                    const int32_t column = x + dx < 0 || x + dx > w - 1 ? x : x + dx;
                    const uint32_t pixel = GetDibPixel(from.image, column, row);
                    red += static_cast<float>(RedOf(pixel)) * weight;
                    green += static_cast<float>(GreenOf(pixel)) * weight;
                    blue += static_cast<float>(BlueOf(pixel)) * weight;
                }
            }
            const auto channel = [](float sum) {
                return static_cast<uint32_t>(std::clamp(static_cast<int32_t>(sum + 0.5), 0, 255));
            };
            SetDibPixel(to.image, x, y, Rgb(channel(red), channel(green), channel(blue)));
        }
    }
    return owner.Release();
}

}  // namespace kfx::test
