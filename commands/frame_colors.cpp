// SPDX-License-Identifier: MIT
#include "commands/frame_colors.h"

namespace kfx::commands {

void AddColor(ColorSet* set, uint8_t red, uint8_t green, uint8_t blue) {
    const uint32_t number = red | uint32_t{green} << 8 | uint32_t{blue} << 16;
    const uint64_t bit = uint64_t{1} << (number & 63);
    uint64_t& word = set->words[number >> 6];
    set->count += (word & bit) == 0 ? 1 : 0;
    word |= bit;
}

size_t CountFrameColors(const Frame& frame, ColorSet* all) {
    ColorSet own;
    const uint8_t* const end = frame.pixels.data() + frame.pixels.size();
    for (const uint8_t* pixel = frame.pixels.data(); pixel != end; pixel += 4) {
        if (pixel[3] == 0) continue;
        AddColor(&own, pixel[0], pixel[1], pixel[2]);
        if (all) AddColor(all, pixel[0], pixel[1], pixel[2]);
    }
    return own.count;
}

}  // namespace kfx::commands
