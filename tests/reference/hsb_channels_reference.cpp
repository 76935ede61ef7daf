// SPDX-License-Identifier: MIT
#include "tests/reference/reference_table.h"

#include <algorithm>
#include <cmath>

#include "framework/memory_guards.h"

namespace kfx::test {
namespace {

using PixelRule = uint32_t (*)(uint32_t pixel, const KernelInput& input);

ImageHandle MapPixels(ImageHandle source, PixelRule rule, const KernelInput& input) {
    const ImageLock from(source);
    if (!from.image) return nullptr;
    MemoryOwner owner(CreateLike(from.image));
    const ImageLock to(owner.memory);
    if (!to.image) return nullptr;
    for (int32_t y = 0; y < from.image->height; ++y)
        for (int32_t x = 0; x < from.image->width; ++x)
            SetDibPixel(to.image, x, y, rule(GetDibPixel(from.image, x, y), input));
    return owner.Release();
}

uint32_t Invert(uint32_t pixel, const KernelInput&) {
    return Rgb(255 - RedOf(pixel), 255 - GreenOf(pixel), 255 - BlueOf(pixel));
}

uint32_t Rearrange(uint32_t pixel, const KernelInput& input) {
    const uint32_t r = RedOf(pixel), g = GreenOf(pixel), b = BlueOf(pixel);
    switch (input.values[4] >= 6 ? 6 : input.values[4]) {
        case 1:
            return Rgb(g, r, b);
        case 2:
            return Rgb(r, b, g);
        case 3:
            return Rgb(g, r, r);
        case 4:
            return Rgb(r, g, g);
        case 5:
            return Rgb(b, b, g);
        case 6:
            return Rgb(g, g, b);
        default:
            return Rgb(b, g, r);
    }
}

uint32_t ToChannel(double value) {
    return static_cast<uint32_t>(std::min(std::max(value * 255, 0.0), 255.0));
}

uint32_t ShiftHsb(uint32_t pixel, const KernelInput& input) {
    const double shift = input.values[0] - 180.0;
    const float ks = 2 * (static_cast<float>(input.values[1]) / 200);
    const float kb = 2 * (static_cast<float>(input.values[2]) / 200);
    const auto r = static_cast<float>(RedOf(pixel) / 255.0);
    const auto g = static_cast<float>(GreenOf(pixel) / 255.0);
    const auto bl = static_cast<float>(BlueOf(pixel) / 255.0);
    const double red = r, green = g, blue = bl;
    const double max = std::max({red, green, blue}), min = std::min({red, green, blue});
    double H = -1, S = 0, V = max;
    if (max != 0) {
        double delta = max - min;
        S = delta / max;
        if (delta == 0) delta = 1;
        if (red == max)
            H = (green - blue) / delta;
        else if (green == max)
            H = (blue - red) / delta + 2;
        else
            H = (red - green) / delta + 4;
        H *= 60;
        if (H < 0) H += 360;
    }
    H += shift;
    S *= ks;
    V *= kb;
    S = std::min(S, 1.0);
    V = std::min(V, 1.0);
    if (S == 0) {
        const auto grey = static_cast<float>(V * 255);
        const auto level = static_cast<uint32_t>(std::min(std::max(grey, 0.0f), 255.0f));
        return Rgb(level, level, level);
    }
    const double x = H / 60;
    const double i = std::floor(x);
    const double f = x - i;
    const double p = (1 - S) * V, q = (1 - f * S) * V, t = (1 - (1 - f) * S) * V;
    if (i == 0) return Rgb(ToChannel(V), ToChannel(t), ToChannel(p));
    if (i == 1) return Rgb(ToChannel(q), ToChannel(V), ToChannel(p));
    if (i == 2) return Rgb(ToChannel(p), ToChannel(V), ToChannel(t));
    if (i == 3) return Rgb(ToChannel(p), ToChannel(q), ToChannel(V));
    if (i == 4) return Rgb(ToChannel(t), ToChannel(p), ToChannel(V));
    return Rgb(ToChannel(V), ToChannel(p), ToChannel(q));
}

ImageHandle Keep(uint32_t wanted, PixelRule rule, const KernelInput& input, ImageHandle image) {
    if (!wanted) return image;
    const ImageHandle next = MapPixels(image, rule, input);
    FreeMemory(image);
    return next;
}

}  // namespace

ImageHandle ReferenceHsbChannels(ImageHandle source, const KernelInput& input) {
    const ImageLock from(source);
    ImageHandle image = DuplicateImage(from.image);
    image = Keep(input.values[6] != 0, Invert, input, image);
    image = Keep(input.values[5] != 0, Rearrange, input, image);
    return Keep(input.values[3] != 0, ShiftHsb, input, image);
}

}  // namespace kfx::test
