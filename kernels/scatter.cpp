// SPDX-License-Identifier: MIT
#include "kernels/scatter.h"

#include <algorithm>
#include <cstring>

#include "framework/cpu.h"

namespace kfx {
namespace {

// Pixels from `first` to `end` of a row: `numbers` holds two random numbers a pixel, first the column's, then
// the row's.
void ScatterPixels(const WorkingImage* from, int32_t y, int32_t first, int32_t end, const uint16_t* numbers,
                   int32_t aperture, WorkingImage* to) {
    const int32_t half = aperture >> 1;
    for (int32_t x = first; x < end; ++x) {
        const int32_t dx = numbers[2 * x] % aperture - half;
        const int32_t dy = numbers[2 * x + 1] % aperture - half;
        uint32_t pixel = GetDibPixel(from, x + dx, y + dy);
        if (pixel == kNoPixel) pixel = GetDibPixel(from, x, y);
        SetDibPixel(to, x, y, pixel);
    }
}

// How to take the remainder of a random number without dividing: the quotient is the upper half of a product,
// shifted. With the factor rounded up that is exact for every number of 15 bits.
struct Remainder {
    uint16_t divisor;  // 2 to kLargestQuickAperture
    uint16_t factor;
    uint16_t shift;
};
Remainder MakeRemainder(int32_t divisor) {
    uint32_t bits = 0;
    const auto d = static_cast<uint32_t>(divisor);
    while (d >> (bits + 1)) ++bits;
    uint32_t factor = ((uint32_t{1} << (16 + bits)) + d - 1) / d;
    if (factor == 65536) factor = 32768, --bits;  // a power of two
    return {static_cast<uint16_t>(d), static_cast<uint16_t>(factor), static_cast<uint16_t>(bits)};
}

// Where each of `count` 24-bit pixels comes from, in bytes from its own place; rows are stored bottom-up.
KFX_INLINE void FindOffsets(const uint16_t* numbers, int32_t count, const Remainder& remainder,
                            int32_t stride, int32_t* __restrict offsets) {
    const Remainder r = remainder;
    const auto half = static_cast<int32_t>(r.divisor >> 1);
    for (int32_t i = 0; i < count; ++i) {
        const uint16_t across = numbers[2 * i];
        const uint16_t down = numbers[2 * i + 1];
        const auto acrossQuotient =
            static_cast<uint16_t>(static_cast<uint32_t>(across) * r.factor >> 16 >> r.shift);
        const auto downQuotient =
            static_cast<uint16_t>(static_cast<uint32_t>(down) * r.factor >> 16 >> r.shift);
        const int32_t dx = across - acrossQuotient * r.divisor - half;
        const int32_t dy = down - downQuotient * r.divisor - half;
        offsets[i] = 3 * dx - dy * stride;
    }
}

// For a row in which no pixel can come from above or below the picture. Pixels that cannot come from the left
// or right of it either are copied without a test.
void ScatterInnerRow(const WorkingImage* from, int32_t y, const uint16_t* numbers, const Remainder& remainder,
                     int32_t* offsets, WorkingImage* to) {
    const int32_t width = from->width;
    const int32_t aperture = remainder.divisor;
    const int32_t first = std::min(aperture >> 1, width);
    const int32_t end = std::max(first, width - (aperture - 1 - (aperture >> 1)));
    const auto stride = static_cast<int32_t>(StrideOf(from));
    Fastest<FindOffsets>()(numbers + 2 * first, end - first, remainder, stride, offsets);
    ScatterPixels(from, y, 0, first, numbers, aperture, to);
    const uint8_t* in = PictureRow(from, y) + 3 * static_cast<size_t>(first);
    uint8_t* out = PictureRow(to, y) + 3 * static_cast<size_t>(first);
    for (int32_t i = 0; i < end - first; ++i, in += 3, out += 3) std::memcpy(out, in + offsets[i], 3);
    ScatterPixels(from, y, end, width, numbers, aperture, to);
}

}  // namespace

void ScatterRow(const WorkingImage* from, int32_t y, const uint16_t* numbers, int32_t aperture,
                int32_t* offsets, WorkingImage* to) {
    const int32_t above = aperture >> 1;
    const int32_t below = aperture - 1 - above;
    const bool quick = from->bitCount == 24 && aperture > 1 && aperture <= kLargestQuickAperture;
    if (quick && y >= above && y < from->height - below)
        ScatterInnerRow(from, y, numbers, MakeRemainder(aperture), offsets, to);
    else
        ScatterPixels(from, y, 0, from->width, numbers, aperture, to);
}

}  // namespace kfx
