// SPDX-License-Identifier: MIT
// Every animation file reader, behind the one that tells the formats apart.
#include <cstdlib>

#include "media/animation.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // Small enough that a run costs no time, large enough for every corpus file.
    kfx::ReadLimits limits;
    limits.maxSide = 512;
    limits.maxPixels = 1 << 20;
    kfx::Animation animation;
    std::string error;
    if (!kfx::ReadAnimationFromMemory(data, size, &animation, &error, limits)) {
        if (error.empty()) std::abort();
        return 0;
    }
    // What is promised of an animation that was read.
    const auto pixels = static_cast<size_t>(animation.width) * static_cast<size_t>(animation.height);
    if (pixels == 0 || animation.frames.empty()) std::abort();
    if (animation.width > limits.maxSide || animation.height > limits.maxSide) std::abort();
    for (const kfx::Frame& frame : animation.frames) {
        if (frame.pixels.size() != 4 * pixels) std::abort();
        if (frame.indices.size() != (frame.indexed ? pixels : 0)) std::abort();
        for (const uint8_t index : frame.indices)
            if (index >= animation.globalPalette.size()) std::abort();
    }
    return 0;
}
