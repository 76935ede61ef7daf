// SPDX-License-Identifier: MIT
// One job on full frames, in true colour: an animation in, an animation out.
#pragma once

#include "commands/engine.h"

namespace kfx::commands {

// Builds the animation and puts the result in its place, with its times, palette and everything else. Alpha
// follows the effect (alpha_ways.h); an opaque animation is built once, without more. False: `*failure` says
// why, and the animation is lost.
bool RunStage(const OpenEngine& engine, HostSession* session, const Job& job, Animation* animation,
              Failure* failure);

// The same for a part of an animation's frames. `opaque`: all of the animation's frames are. Opaque frames of
// a transparent animation have another ground beyond their edges, whichever frames they are built with.
bool RunStageOfPart(const OpenEngine& engine, HostSession* session, const Job& job, bool opaque,
                    Animation* part, Failure* failure);

}  // namespace kfx::commands
