// SPDX-License-Identifier: MIT
#include "tests/reference/bilinear_reference.h"

#include <cmath>

#include "framework/math/elementary.h"
#include "framework/memory_guards.h"

namespace kfx::test {

uint32_t ReferenceBilinear(const WorkingImage* image, double x, double y, uint32_t fallback) {
    const int32_t w = image->width, h = image->height;
    x += 0.5;
    y += 0.5;
    if (std::isnan(x) || std::isnan(y)) return fallback & 0xFFFFFF;
    if (x < -1 || x >= w || y < -1 || y >= h) return fallback & 0xFFFFFF;
    const auto ix = static_cast<int32_t>(x), iy = static_cast<int32_t>(y);
    const auto ix1 = static_cast<int32_t>(x + 1), iy1 = static_cast<int32_t>(y + 1);
    uint32_t p00 = fallback, p10 = fallback, p01 = fallback, p11 = fallback;
    if (x >= 0 && y >= 0) p00 = GetDibPixel(image, ix, iy);
    if (x + 1 < w && y >= 0) p10 = GetDibPixel(image, ix1, iy);
    if (x >= 0 && y + 1 < h) p01 = GetDibPixel(image, ix, iy1);
    if (x + 1 < w && y + 1 < h) p11 = GetDibPixel(image, ix1, iy1);
    const double fx = x - std::floor(x), fy = y - std::floor(y);
    uint32_t result = 0;
    for (int shift = 0; shift < 24; shift += 8) {
        const double a = p00 >> shift & 255, b = p10 >> shift & 255;
        const double c = p01 >> shift & 255, d = p11 >> shift & 255;
        const double value = ((b * fx + a * (1 - fx)) * (1 - fy) + (c * (1 - fx) + d * fx) * fy) + 0.5;
        result |= (static_cast<uint32_t>(value) & 255) << shift;
    }
    return result;
}

ImageHandle ReferenceImplosion(ImageHandle source, double k, int32_t cxp, int32_t cyp, uint32_t background) {
    const ImageLock from(source);
    MemoryOwner owner(DuplicateImage(from.image));
    const ImageLock to(owner.memory);
    if (!to.image) return nullptr;
    const int32_t w = from.image->width, h = from.image->height;
    const double cx = cxp / 100.0 * w, cy = cyp / 100.0 * h;
    double sx = 1, sy = 1;
    if (w > h) sy = static_cast<double>(w) / h;
    if (w < h) sx = static_cast<double>(h) / w;
    const double R = w >= h ? cx : cy;
    for (int32_t y = 0; y < h; ++y) {
        for (int32_t x = 0; x < w; ++x) {
            const double dx = (x - cx) * sx, dy = (y - cy) * sy;
            const double d2 = dx * dx + dy * dy;
            if (d2 >= R * R) continue;
            double m = 1;
            if (d2 > 0) m = Pow(Sin(std::sqrt(d2) * 1.5707963267948966 / R), -k);
            SetDibPixel(to.image, x, y,
                        ReferenceBilinear(from.image, m * dx / sx + cx, m * dy / sy + cy, background));
        }
    }
    return owner.Release();
}

}  // namespace kfx::test
