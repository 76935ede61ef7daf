// SPDX-License-Identifier: MIT
// Frames on several threads, of builds and of writers.
#pragma once

#include "framework/frame_runner.h"
#include "media/job_runner.h"

namespace kfx::commands {

// How many processors this process may use, at most kMostFrameThreads.
int UsableThreads();

// A runner with so many threads, the calling one among them; limited to 1 to kMostFrameThreads. All threads
// have ended when its work returns. Where the system gives fewer threads, the frames are left to those.
FrameRunner FramesOnThreads(int threads);

// The same for the writers' work; `threads` 0: as many as there are usable processors.
JobRunner JobsOnThreads(int threads);

}  // namespace kfx::commands
