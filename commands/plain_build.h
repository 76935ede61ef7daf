// SPDX-License-Identifier: MIT
// Results without an effect.
#pragma once

#include "commands/built_animation.h"
#include "commands/command_line.h"

namespace kfx::commands {

// The frames as an effect that changes nothing would have built them: with indices where they have some, else
// in true colour. Takes the pixels out of the source's frames; it has none afterwards. `jobs` may give
// threads.
BuiltAnimation PlainBuild(Animation* source, const JobRunner& jobs = JobRunner());

// Whether a GIF can show each frame exactly, with a palette of the frame's own where that is needed.
// Half-transparent pixels count as what a GIF makes of them. `jobs` may give threads.
bool FitsGifPalettes(const Animation& animation, const JobRunner& jobs = JobRunner());

// An effect with settings that leave pictures as they are, for frames that only need a palette.
const EffectChoice& UnchangingEffect();

}  // namespace kfx::commands
