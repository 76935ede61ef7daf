// SPDX-License-Identifier: MIT
#include "effects/shared/bilinear_sampler.h"

#include <cmath>

namespace kfx {
namespace {

uint32_t Blend(uint32_t c00, uint32_t c10, uint32_t c01, uint32_t c11, double fx, double fy) {
    const double value = ((c10 * fx + c00 * (1 - fx)) * (1 - fy) + (c01 * (1 - fx) + c11 * fx) * fy) + 0.5;
    return static_cast<uint32_t>(value) & 255;
}

}  // namespace

uint32_t SampleBilinear(const WorkingImage* image, double x, double y, uint32_t fallback) {
    const double left = x + 0.5;
    const double top = y + 0.5;
    if (!(left >= -1 && left < image->width && top >= -1 && top < image->height)) return fallback & 0xFFFFFF;
    // Truncated, not rounded down: left of column 0 both columns are column 0, of which the first does not
    // count.
    const auto x0 = static_cast<int32_t>(left);
    const auto y0 = static_cast<int32_t>(top);
    const auto x1 = static_cast<int32_t>(left + 1);
    const auto y1 = static_cast<int32_t>(top + 1);
    const bool hasLeft = left >= 0;
    const bool hasTop = top >= 0;
    const bool hasRight = left + 1 < image->width;
    const bool hasBottom = top + 1 < image->height;
    const uint32_t p00 = hasLeft && hasTop ? GetDibPixel(image, x0, y0) : fallback;
    const uint32_t p10 = hasRight && hasTop ? GetDibPixel(image, x1, y0) : fallback;
    const uint32_t p01 = hasLeft && hasBottom ? GetDibPixel(image, x0, y1) : fallback;
    const uint32_t p11 = hasRight && hasBottom ? GetDibPixel(image, x1, y1) : fallback;
    const double fx = left - std::floor(left);
    const double fy = top - std::floor(top);
    return Rgb(Blend(RedOf(p00), RedOf(p10), RedOf(p01), RedOf(p11), fx, fy),
               Blend(GreenOf(p00), GreenOf(p10), GreenOf(p01), GreenOf(p11), fx, fy),
               Blend(BlueOf(p00), BlueOf(p10), BlueOf(p01), BlueOf(p11), fx, fy));
}

void SampleRow(const WorkingImage* image, const double* x, const double* y, int32_t count, uint32_t fallback,
               uint8_t* out) {
    for (int32_t i = 0; i < count; ++i, out += 3) {
        const uint32_t color = SampleBilinear(image, x[i], y[i], fallback);
        out[0] = static_cast<uint8_t>(BlueOf(color));
        out[1] = static_cast<uint8_t>(GreenOf(color));
        out[2] = static_cast<uint8_t>(RedOf(color));
    }
}

}  // namespace kfx
