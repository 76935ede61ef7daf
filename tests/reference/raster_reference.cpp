// SPDX-License-Identifier: MIT
#include "tests/reference/reference_table.h"

#include "framework/memory_guards.h"

namespace kfx::test {

ImageHandle ReferenceRaster(ImageHandle source, const KernelInput& input) {
    const int64_t d = input.values[0], s = input.values[1];
    const ImageLock from(source);
    MemoryOwner owner(DuplicateImage(from.image));
    const ImageLock to(owner.memory);
    if (!to.image) return nullptr;
    if (s < 1) return owner.Release();  // bands without a height
    for (int64_t y0 = 0; y0 < from.image->height; y0 += 2 * s) {
        for (int64_t y = y0; y < y0 + s && y < from.image->height; ++y) {
            for (int32_t x = 0; x < from.image->width; ++x) {
                const uint32_t pixel = GetDibPixel(to.image, x, static_cast<int32_t>(y));
                uint32_t result = 0;
                for (int shift = 0; shift < 24; shift += 8) {
                    const int64_t k0 = int64_t{input.background >> shift & 255} * d / 255;
                    const int64_t c = pixel >> shift & 255;
                    result |= static_cast<uint32_t>((c * (255 - d) / 255 + k0) & 255) << shift;
                }
                SetDibPixel(to.image, x, static_cast<int32_t>(y), result);
            }
        }
    }
    return owner.Release();
}

}  // namespace kfx::test
