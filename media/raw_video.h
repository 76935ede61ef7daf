// SPDX-License-Identifier: MIT
// Uncompressed frames for video programs: Y4M streams, or nothing but red, green and blue.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "media/animation.h"

namespace kfx {

enum class RawFormat {
    Y4m,   // with a line of text for size and rate; 4:4:4, BT.601, limited range
    Rgb,   // three bytes a pixel, rows from the top, no headers
    Rgba,  // four bytes a pixel, alpha straight
};

// Frames a second, as a fraction without common factors.
struct FrameRate {
    int64_t numerator = 25;
    int64_t denominator = 1;
};

// An animation at one rate.
struct ConstantRate {
    FrameRate rate;
    std::vector<uint32_t>
        repeats;  // how often each frame stands in the stream; 0: it is too short for the rate
};

// Video has one rate. When every frame begins, to the rounding of the animation's times, where a constant
// rate has it, that rate is taken and each frame stands in the stream once. Otherwise the rate is the
// smallest that has all times as whole numbers of frames, but at most 100 a second, to which times are
// rounded then, and frames are repeated. A time of 0 counts as a tenth of a second, as viewers have it.
ConstantRate PlanConstantRate(const Animation& animation);

// Takes the bytes of a stream; false ends the writing.
using TakeBytes = std::function<bool(const uint8_t* data, size_t size)>;

// Hands out the stream piece by piece, a frame at a time. Transparency shows `behind`, except in Rgba. False
// when `take` said so.
bool WriteRawVideo(const Animation& animation, const ConstantRate& plan, RawFormat format, RgbColor behind,
                   const TakeBytes& take);

}  // namespace kfx
