// SPDX-License-Identifier: MIT
// Several files as one animation.
#pragma once

#include "commands/command_line.h"
#include "media/animation.h"

namespace kfx::commands {

struct Report;

// Reads the source's files, which must have one size, one behind the other. Loop count, background, comment
// and metadata are those of the first; where that is a still, the animation loops for ever. It has a global
// palette when every file has one and all their colours fit in it. `delay` in milliseconds holds for every
// frame; -1: files keep their times, and pictures without one get kStillMilliseconds. A single file keeps
// everything but the delay. The limits hold for all files together. Warnings become notes of the report.
// False: the report says which file is wrong.
bool ReadSequence(const SourceFiles& source, ReadLimits limits, int delay, Animation* animation,
                  Report* report);

}  // namespace kfx::commands
