// SPDX-License-Identifier: MIT
// Small animations for tests of what Stage does with them.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "stage/film.h"

namespace kfx::test {

// A film of 2 x 1 pixels: frame i has this time in milliseconds and this value in all bytes.
inline std::shared_ptr<const stage::Film> SmallFilm(const std::vector<int>& milliseconds,
                                                    const std::vector<uint8_t>& values,
                                                    stage::FramePool* pool) {
    Animation animation;
    animation.width = 2;
    animation.height = 1;
    animation.loopCount = kLoopForever;
    for (size_t i = 0; i < milliseconds.size(); ++i) {
        Frame frame;
        frame.pixels.assign(8, values[i]);
        frame.milliseconds = milliseconds[i];
        frame.delay = milliseconds[i] / 10;
        animation.frames.push_back(frame);
    }
    return stage::MakeFilm(animation, pool);
}

}  // namespace kfx::test
