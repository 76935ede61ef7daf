// SPDX-License-Identifier: MIT
// Frames on several threads.
#pragma once

#include "framework/frame_runner.h"

namespace kfx::commands {

// How many processors this process may use, at most kMostFrameThreads.
int UsableThreads();

// A runner with so many threads, the calling one among them; limited to 1 to kMostFrameThreads. All threads
// have ended when its work returns. Where the system gives fewer threads, the frames are left to those.
FrameRunner FramesOnThreads(int threads);

}  // namespace kfx::commands
