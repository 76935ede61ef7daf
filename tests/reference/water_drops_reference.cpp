// SPDX-License-Identifier: MIT
#include "tests/reference/reference_table.h"

#include "framework/memory_guards.h"
#include "framework/random.h"

#ifdef _WIN32
#include <cstdlib>
#endif

namespace kfx::test {
namespace {

#ifdef _WIN32
void Seed(uint32_t seed) { std::srand(seed); }
int32_t Random() { return std::rand(); }
#else
// The generator of the Windows C runtime: x = 214013 x + 2531011, of which bits 16 to 30 are handed out.
uint32_t state;
void Seed(uint32_t seed) { state = seed; }
int32_t Random() {
    state = state * 214013u + 2531011u;
    return static_cast<int32_t>(state >> 16 & 32767);
}
#endif

}  // namespace

ImageHandle ReferenceWaterDrops(ImageHandle source, const KernelInput& input) {
    const int32_t aperture = input.values[0];
    const ImageLock from(source);
    if (aperture < 1) return nullptr;
    MemoryOwner owner(CreateLike(from.image));
    const ImageLock to(owner.memory);
    if (!to.image) return nullptr;
    Seed(ClockSeconds());
    const int32_t half = aperture >> 1;
    for (int32_t y = 0; y < from.image->height; ++y) {
        for (int32_t x = 0; x < from.image->width; ++x) {
            const int32_t dx = Random() % aperture - half;
            const int32_t dy = Random() % aperture - half;
            uint32_t pixel = GetDibPixel(from.image, x + dx, y + dy);
            if (pixel == kNoPixel) pixel = GetDibPixel(from.image, x, y);
            SetDibPixel(to.image, x, y, pixel);
        }
    }
    return owner.Release();
}

}  // namespace kfx::test
