// SPDX-License-Identifier: MIT
#include "tests/reference/reference_table.h"

#include "framework/memory_guards.h"

namespace kfx::test {
namespace {

void FindLevels(const uint32_t histogram[256], uint32_t t, int32_t* lo, int32_t* hi) {
    uint32_t sum = 0;
    *lo = 255;
    for (int32_t level = 0; level < 256; ++level) {
        sum += histogram[level];
        if (sum > t) {
            *lo = level;
            break;
        }
    }
    sum = 0;
    *hi = 0;
    for (int32_t level = 255; level >= 1; --level) {
        sum += histogram[level];
        if (sum > t) {
            *hi = level;
            break;
        }
    }
}

}  // namespace

ImageHandle ReferenceNormalize(ImageHandle source, const KernelInput&) {
    const ImageLock from(source);
    MemoryOwner owner(CreateLike(from.image));
    const ImageLock to(owner.memory);
    if (!to.image) return nullptr;
    const int32_t width = from.image->width, height = from.image->height;
    uint32_t histogram[256] = {};
    for (int32_t y = 0; y < height; ++y) {
        for (int32_t x = 0; x < width; ++x) {
            const uint32_t pixel = GetDibPixel(from.image, x, y);
            const uint32_t index =
                RedOf(pixel) * 77 / 255 + GreenOf(pixel) * 150 / 255 + BlueOf(pixel) * 28 / 255;
            ++histogram[index & 255];
        }
    }
    int32_t lo, hi;
    FindLevels(histogram, static_cast<uint32_t>(width * height) / 100, &lo, &hi);
    if (lo == hi) FindLevels(histogram, 0, &lo, &hi);
    if (lo == hi) return nullptr;  // one luminance: the picture stays
    for (int32_t y = 0; y < height; ++y) {
        for (int32_t x = 0; x < width; ++x) {
            const uint32_t pixel = GetDibPixel(from.image, x, y);
            uint32_t result = 0;
            for (int shift = 0; shift < 24; shift += 8) {
                const auto v = static_cast<int32_t>(pixel >> shift & 255);
                const int32_t mapped = v < lo ? 0 : v > hi ? 255 : (v - lo) * 254 / (hi - lo);
                result |= static_cast<uint32_t>(mapped) << shift;
            }
            SetDibPixel(to.image, x, y, result);
        }
    }
    return owner.Release();
}

}  // namespace kfx::test
