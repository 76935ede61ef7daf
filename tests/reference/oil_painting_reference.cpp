// SPDX-License-Identifier: MIT
#include "tests/reference/reference_table.h"

#include <algorithm>
#include <cmath>

#include "framework/math/elementary.h"
#include "framework/memory_guards.h"

namespace kfx::test {
namespace {

int32_t SizeOf(int32_t radius) {
    const double x = radius / 100.0;
    if (x > 0) return static_cast<int32_t>(std::min(2 * std::ceil(x) + 1, 99.0));  // the product's limit
    int32_t n = 5;
    for (;; n += 2) {
        const int32_t half = n / 2;
        double s = 0;
        for (int32_t k = -half; k <= half; ++k) s += Exp(-2.0 * k * k);
        if (static_cast<int32_t>(Exp(-2.0 * half * half) / s * 255) < 1) return n - 2;
    }
}

}  // namespace

// Without a canvas: what lies outside the picture reads as background.
ImageHandle ReferenceOilPainting(ImageHandle source, const KernelInput& input) {
    const ImageLock from(source);
    MemoryOwner owner(CreateLike(from.image));
    const ImageLock to(owner.memory);
    if (!to.image) return nullptr;
    const int32_t n = SizeOf(input.values[0]);
    const int32_t width = from.image->width, height = from.image->height;
    const auto stored = [&](int32_t x, int32_t r) {
        const uint32_t pixel = GetDibPixel(from.image, x, height - 1 - r);
        return pixel == kNoPixel ? input.background : pixel;
    };
    for (int32_t r = 0; r < height; ++r)
        for (int32_t x = 0; x < width; ++x) {
            // The rightmost column and the last stored row are never filtered.
            uint32_t color = input.background;
            if (r < height - 1 && x < width - 1) {
                uint32_t histogram[256] = {}, best = 0;
                const auto visit = [&](int32_t row, int32_t first, int32_t last) {
                    for (int32_t column = first; column <= last; ++column) {
                        const uint32_t pixel = stored(column, row);
                        const uint32_t level =
                            (BlueOf(pixel) * 3735 + GreenOf(pixel) * 19235 + RedOf(pixel) * 9798) >> 15;
                        if (++histogram[level] > best) {
                            best = histogram[level];
                            color = pixel;
                        }
                    }
                };
                for (int32_t k = 0; k < n; ++k) {
                    visit(r - (n - k), x + 1 - k, x + 1 + k);
                    visit(r + (n - k), x + 1 - k, x + 1 + k);
                }
                visit(r, x - n, x + n);
            }
            SetDibPixel(to.image, x, height - 1 - r, color);
        }
    return owner.Release();
}

}  // namespace kfx::test
