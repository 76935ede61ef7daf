// SPDX-License-Identifier: MIT
#include "tests/reference/reference_table.h"

#include <algorithm>
#include <cmath>

#include "framework/math/elementary.h"
#include "framework/memory_guards.h"
#include "tests/reference/bilinear_reference.h"

namespace kfx::test {

ImageHandle ReferenceSwirl(ImageHandle source, const KernelInput& input) {
    const ImageLock from(source);
    MemoryOwner owner(DuplicateImage(from.image));
    const ImageLock to(owner.memory);
    if (!to.image) return nullptr;
    const int32_t w = from.image->width, h = from.image->height;
    const double cx = w * 0.5, cy = h * 0.5, R = std::max(w * 0.5, h * 0.5);
    double sx = 1, sy = 1;
    if (w > h) sy = static_cast<double>(w) / h;
    if (w < h) sx = static_cast<double>(h) / w;
    const int64_t difference = int64_t{input.values[0]} - 1440;
    const double a = static_cast<int32_t>(static_cast<uint32_t>(difference)) * 3.141592653589793 / 180;
    for (int32_t y = 0; y < h; ++y) {
        for (int32_t x = 0; x < w; ++x) {
            const double dx = (x - cx) * sx, dy = (y - cy) * sy;
            const double d2 = dx * dx + dy * dy;
            if (d2 >= R * R) continue;
            const double r = std::sqrt(d2) / R;
            const double t = 1 - r;
            const double theta = t * a * t;
            const double s = Sin(theta), c = Cos(theta);
            const double u = (c * dx - s * dy) / sx + cx;
            const double v = (s * dx + c * dy) / sy + cy;
            SetDibPixel(to.image, x, y, ReferenceBilinear(from.image, u, v, input.background));
        }
    }
    return owner.Release();
}

}  // namespace kfx::test
