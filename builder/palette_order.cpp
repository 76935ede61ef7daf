// SPDX-License-Identifier: MIT
#include "builder/palette_order.h"

#include <algorithm>

namespace kfx {

int32_t BitsForColors(int32_t colors) {
    for (int32_t bits = 1; bits <= 8; ++bits)
        if (colors <= 1 << bits) return bits;
    return 24;
}

int32_t NearestEntry(const uint8_t* palette, int32_t count, int32_t red, int32_t green, int32_t blue) {
    int32_t best = 1000000;  // beyond every distance
    int32_t nearest = 0;
    for (int32_t i = 0; i < count && best > 0; ++i, palette += 3) {
        const int32_t distance = ColorDistance(palette, red, green, blue);
        if (distance < best) {
            best = distance;
            nearest = i;
        }
    }
    return nearest;
}

void SortByLuminance(uint8_t* palette, int32_t count) {
    // Insertion keeps entries of equal luminance in their order.
    for (int32_t i = 1; i < count; ++i) {
        uint8_t* entry = palette + 3 * i;
        const int32_t luminance = LuminanceOf(entry[0], entry[1], entry[2]);
        uint8_t* place = entry;
        while (place > palette && LuminanceOf(place[-3], place[-2], place[-1]) > luminance) place -= 3;
        std::rotate(place, entry, entry + 3);
    }
}

}  // namespace kfx
