// SPDX-License-Identifier: MIT
#include "tests/reference/reference_table.h"

#include <algorithm>

#include "framework/memory_guards.h"

namespace kfx::test {

ImageHandle ReferenceObscure(ImageHandle source, const KernelInput& input) {
    const int64_t level = input.values[0];
    const ImageLock from(source);
    if (level < 1) return nullptr;
    MemoryOwner owner(CreateLike(from.image));
    const ImageLock to(owner.memory);
    if (!to.image) return nullptr;
    const int64_t width = from.image->width, height = from.image->height;
    for (int64_t top = 0; top < height; top += level)
        for (int64_t left = 0; left < width; left += level) {
            const auto right = static_cast<int32_t>(std::min(left + level, width));
            const auto bottom = static_cast<int32_t>(std::min(top + level, height));
            uint64_t sum0 = 0, sum1 = 0, sum2 = 0, count = 0;
            for (auto y = static_cast<int32_t>(top); y < bottom; ++y)
                for (auto x = static_cast<int32_t>(left); x < right; ++x, ++count) {
                    const uint32_t pixel = GetDibPixel(from.image, x, y);
                    sum0 += pixel & 255;
                    sum1 += pixel >> 8 & 255;
                    sum2 += pixel >> 16 & 255;
                }
            const auto average =
                static_cast<uint32_t>(sum0 / count | (sum1 / count) << 8 | (sum2 / count) << 16);
            for (auto y = static_cast<int32_t>(top); y < bottom; ++y)
                for (auto x = static_cast<int32_t>(left); x < right; ++x)
                    SetDibPixel(to.image, x, y, average);
        }
    return owner.Release();
}

}  // namespace kfx::test
