// SPDX-License-Identifier: MIT
// Reads bytes as an animation file and ends the program when the reader breaks what it promises.
#pragma once

#include <cstdlib>

#include "media/animation.h"

namespace kfx::test {

inline void ReadAnimationOrAbort(const uint8_t* data, size_t size) {
    // Small enough that a run costs no time, large enough for every corpus file.
    ReadLimits limits;
    limits.maxSide = 512;
    limits.maxPixels = 1 << 20;
    Animation animation;
    std::string error;
    if (!ReadAnimationFromMemory(data, size, &animation, &error, limits)) {
        if (error.empty()) std::abort();
        return;
    }
    const auto pixels = static_cast<size_t>(animation.width) * static_cast<size_t>(animation.height);
    if (pixels == 0 || animation.frames.empty()) std::abort();
    if (animation.width > limits.maxSide || animation.height > limits.maxSide) std::abort();
    for (const Frame& frame : animation.frames) {
        if (frame.pixels.size() != 4 * pixels) std::abort();
        if (frame.indices.size() != (frame.indexed ? pixels : 0)) std::abort();
        for (const uint8_t index : frame.indices)
            if (index >= animation.globalPalette.size()) std::abort();
    }
}

}  // namespace kfx::test
