// SPDX-License-Identifier: MIT
// Frames widened by repeated edge pixels, for effects that show a background colour beyond the picture.
#pragma once

#include <string>
#include <vector>

#include "commands/job.h"
#include "media/animation.h"

namespace kfx::commands {

// Pixels on the left and on the right, above and below.
struct Margins {
    int columns = 0;
    int rows = 0;
};

// How far beyond the edges of a picture of this size the job's effect looks for colours. Nothing for effects
// that show no background, and for those whose places depend on the picture's size, so that a wider picture
// would be another one.
Margins EdgeMargins(const Job& job, int width, int height);

// The effects for which there can be margins, and those that show a background colour, as the effect list
// names them.
std::vector<std::string> EffectsWithEdges();
std::vector<std::string> EffectsWithBackground();

// Adds the margins to every frame; the picture stays in the middle.
void WidenFrames(const Margins& margins, Animation* animation);

// Takes them away.
void CropFrames(const Margins& margins, Animation* animation);

}  // namespace kfx::commands
