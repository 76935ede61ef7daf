// SPDX-License-Identifier: MIT
#include "tests/reference/reference_table.h"

#include "framework/memory_guards.h"

namespace kfx::test {

ImageHandle ReferenceSolarize(ImageHandle source, const KernelInput& input) {
    const ImageLock from(source);
    MemoryOwner owner(CreateLike(from.image));
    const ImageLock to(owner.memory);
    if (!to.image) return nullptr;
    for (int32_t y = 0; y < from.image->height; ++y) {
        for (int32_t x = 0; x < from.image->width; ++x) {
            const uint32_t pixel = GetDibPixel(from.image, x, y);
            uint32_t result = 0;
            for (int shift = 0; shift < 24; shift += 8) {
                const auto c = static_cast<int32_t>(pixel >> shift & 255);
                result |= static_cast<uint32_t>(c >= input.values[0] ? c : 255 - c) << shift;
            }
            SetDibPixel(to.image, x, y, result);
        }
    }
    return owner.Release();
}

}  // namespace kfx::test
