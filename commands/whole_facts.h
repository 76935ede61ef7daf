// SPDX-License-Identifier: MIT
// What only all frames of an animation say together, so that some of them can be built by themselves.
#pragma once

#include <cstddef>
#include <vector>

#include "builder/build_driver.h"
#include "commands/journey.h"
#include "media/animation.h"

namespace kfx::commands {

// About the frames that an effect gets.
struct StageFacts {
    bool opaque = true;        // all of them are
    GatheredSummary gathered;  // by the effect
};

struct WholeFacts {
    std::vector<StageFacts> stages;  // of each effect, in their order
    bool keepsColors = false;        // without an effect: a GIF shows each frame exactly
    // For results on a palette: the colour that hidden pixels get.
    RgbColor hidden;
    ComputedPalette palette;
};

// A pipeline's run that has to do with other runs over frames of the same animation.
struct WholeRun {
    WholeUse use = WholeUse::Find;  // or Hold
    WholeFacts* facts = nullptr;    // are found, or hold
    // With Hold: when all frames appear, and the numbers of those that there are. What --every leaves out is
    // gone already.
    Timeline timeline;
    std::vector<size_t> numbers;
    int framesBefore = 0;  // of those that there are; see WholeAnimation
    bool hasSeveralFrames = false;
};

}  // namespace kfx::commands
