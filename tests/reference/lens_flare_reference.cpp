// SPDX-License-Identifier: MIT
#include "tests/reference/reference_table.h"

#include <algorithm>
#include <cmath>

#include "framework/math/elementary.h"
#include "framework/memory_guards.h"

namespace kfx::test {
namespace {

struct Element {
    int red, green, blue;
    double size, position;
    int kind;
};

const Element kElements[19] = {
    {0, 14, 113, 0.027, 0.6699, 1}, {90, 181, 142, 0.01, 0.2692, 1}, {56, 140, 106, 0.005, -0.0112, 1},
    {9, 29, 19, 0.031, 0.649, 2},   {24, 14, 0, 0.015, 0.4696, 2},   {24, 14, 0, 0.037, 0.4087, 2},
    {42, 19, 0, 0.022, -0.2003, 2}, {0, 9, 17, 0.025, -0.4103, 2},   {0, 4, 10, 0.058, -0.4503, 2},
    {5, 5, 14, 0.017, -0.5112, 2},  {9, 4, 0, 0.2, -1.496, 2},       {9, 4, 0, 0.5, -1.496, 2},
    {34, 19, 0, 0.075, 0.4487, 3},  {14, 26, 0, 0.1, 1, 3},          {10, 25, 13, 0.039, -1.301, 3},
    {9, 0, 17, 0.19, 1.309, 4},     {9, 16, 5, 0.195, 1.309, 4},     {17, 4, 0, 0.2, 1.309, 4},
    {17, 4, 0, 0.038, -1.301, 4},
};

struct Glow {
    double radius;
    int red, green, blue;
};

const Glow kSteepGlows[3] = {{0.0375, 239, 239, 239}, {0.078125, 245, 245, 245}, {0.1796875, 255, 38, 43}};

void Brighten(WorkingImage* image, double strength, int red, int green, int blue, int32_t x, int32_t y) {
    const int colors[3] = {red, green, blue};
    const auto single = static_cast<float>(strength);
    const uint32_t pixel = GetDibPixel(image, x, y);
    uint32_t result = 0;
    for (int i = 0; i < 3; ++i) {
        const auto k = static_cast<float>(colors[i] / 255.0);
        const auto c = static_cast<float>(pixel >> 8 * i & 255);
        const auto n = static_cast<int32_t>((255 - c) * single * k + c);
        result |= (static_cast<uint32_t>(n) & 255) << 8 * i;
    }
    SetDibPixel(image, x, y, result);
}

void PaintElement(WorkingImage* image, const Element& element, double r, double e, int32_t x, int32_t y) {
    double strength;
    if (element.kind == 1) {
        const double t = (r - e) / r;
        if (!(t > 0)) return;
        strength = t * t;
    } else if (element.kind == 2) {
        const double t = (r - e) / (r * 0.15);
        if (!(t > 0)) return;
        strength = std::min(t, 1.0);
    } else if (element.kind == 3) {
        const double t = (r - e) / (r * 0.12);
        if (!(t > 0)) return;
        strength = t <= 1 ? t : 1 - t * 0.12;
    } else {
        const double u = (e - r) / (r * 0.04);
        if (!(std::fabs(u) < 1)) return;
        strength = 1 - std::fabs(u);
    }
    Brighten(image, strength, element.red, element.green, element.blue, x, y);
}

}  // namespace

ImageHandle ReferenceLensFlare(ImageHandle source, const KernelInput& input) {
    const ImageLock from(source);
    MemoryOwner owner(DuplicateImage(from.image));
    const ImageLock to(owner.memory);
    if (!to.image) return nullptr;
    const int32_t width = from.image->width, height = from.image->height;
    const int32_t lightX = (input.values[0] - 50) * width / 100 + width / 2;
    const int32_t lightY = (input.values[1] - 50) * height / 100 + height / 2;
    const int32_t S = std::max(width, height) * input.values[2] / 100;
    if (S < 1) return owner.Release();  // no flare
    const int32_t hw = width / 2, hh = height / 2, ax = hw - lightX, ay = hh - lightY;
    for (int32_t y = 0; y < height; ++y) {
        for (int32_t x = 0; x < width; ++x) {
            const double d = static_cast<float>(Hypot(x - lightX, y - lightY));
            for (const Glow& glow : kSteepGlows) {
                const double R = S * glow.radius;
                const double t = (R - d) / R;
                if (t > 0) Brighten(to.image, t * t, glow.red, glow.green, glow.blue, x, y);
            }
            const double linear = S * 0.3359375;
            const double t = (linear - d) / linear;
            if (t > 0) Brighten(to.image, t, 69, 59, 64, x, y);
            const double ring = S * 0.084375;
            const double u = (d - ring) / (ring * 0.07);
            if (std::fabs(u) < 1) Brighten(to.image, 1 - std::fabs(u), 80, 15, 4, x, y);
            for (int i = 0; i < 19; ++i) {
                const Element& element = kElements[i];
                auto column = static_cast<int32_t>(hw + ax * element.position);
                auto row = static_cast<int32_t>(hh + ay * element.position);
                if (i == 13) column = width - lightX, row = height - lightY;
                const auto size = static_cast<float>(S * element.size);
                PaintElement(to.image, element, double{size}, Hypot(column - x, row - y), x, y);
            }
        }
    }
    return owner.Release();
}

}  // namespace kfx::test
