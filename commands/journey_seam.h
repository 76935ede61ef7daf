// SPDX-License-Identifier: MIT
// Whether an animation repeats without a jump.
#pragma once

#include <string>
#include <vector>

#include "commands/built_animation.h"

namespace kfx::commands {

// How much neighbouring pictures differ: the mean over all pixels of the largest difference of a channel,
// with colours weighed by their alpha; 0 to 255.
struct Steps {
    double largest = 0;  // between neighbours
    double last = 0;     // from the last frame to the first
};

Steps MeasureSteps(const BuiltAnimation& built, const SourceRecord& source);

// Whether the last step does not stand out: it is at most a quarter larger than the largest of the others,
// and a quarter of a level. An animation of one frame has nothing that could.
bool IsSeamless(const Steps& steps);

// Measures a result and adds a clause for the user to `notes` where it jumps, and where it plays only once
// though its format (`loops`) could repeat it. Returns whether it repeats without a jump.
bool CheckSeam(const BuiltAnimation& built, const SourceRecord& source, bool loops,
               std::vector<std::string>* notes);

}  // namespace kfx::commands
