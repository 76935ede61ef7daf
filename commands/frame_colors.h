// SPDX-License-Identifier: MIT
// How many colours frames have.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "media/animation.h"

namespace kfx::commands {

// Which of the colours of 24 bits were seen.
struct ColorSet {
    ColorSet() : words(size_t{1} << 18) {}

    std::vector<uint64_t> words;
    size_t count = 0;
};

void AddColor(ColorSet* set, uint8_t red, uint8_t green, uint8_t blue);

// Adds the colours of a frame that are not fully transparent, and returns how many the frame has. `all` may
// be null.
size_t CountFrameColors(const Frame& frame, ColorSet* all);

}  // namespace kfx::commands
