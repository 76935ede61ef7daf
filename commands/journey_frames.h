// SPDX-License-Identifier: MIT
// Jobs whose parameters move, as jobs that engines can do: frames with equal values by themselves.
#pragma once

#include <functional>

#include "commands/host_session.h"
#include "commands/job.h"
#include "commands/whole_facts.h"

namespace kfx::commands {

// Makes the job's result of a part of the animation's frames, in its place, of as many frames.
using BuildFrames = std::function<bool(const Job& job, Animation* part)>;

// Gives each run of frames with equal values to `build`, in order, with the job that has these values, and
// puts the results together. Values follow the times of all frames; `part`, which may be null, has those
// where the animation is a part of another one. The session's progress counts the animation's frames. False:
// `build` has failed, and the animation is lost.
bool BuildMovingFrames(const Job& job, const BuildFrames& build, HostSession* session, Animation* animation,
                       const WholeRun* part = nullptr);

}  // namespace kfx::commands
