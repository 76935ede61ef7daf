// SPDX-License-Identifier: MIT
// Two animations beside each other on the axis of time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "commands/picture_quality.h"
#include "media/animation.h"

namespace kfx::commands {

// A time during which each of the two shows one frame. Two frames that meet are one moment.
struct Moment {
    int64_t milliseconds = 0;  // from the beginning
    size_t frameA = 0;
    size_t frameB = 0;
    uint64_t differentPixels = 0;
    // Valid when pixels differ: the first different one, in rows from the top.
    int x = 0;
    int y = 0;
    PictureQuality quality;
};

struct Comparison {
    bool sameSize = false;
    bool samePlays = false;
    bool sameDuration = false;
    // Empty when the sizes differ. Where one animation is longer, the rest of it is compared with nothing.
    std::vector<Moment> moments;
};

struct CompareOptions {
    // A picture may come or go so many milliseconds earlier or later.
    int timeTolerance = 0;
};

// Whether two pixels (RGBA) look the same: colours that full transparency hides do not count.
bool IsSamePixel(const uint8_t* a, const uint8_t* b);

// What a viewer shows of both. Frames without a time are shown for a tenth of a second, as viewers do. How
// long and how often does not count where both show one picture only.
Comparison CompareAnimations(const Animation& a, const Animation& b, const CompareOptions& options);

}  // namespace kfx::commands
