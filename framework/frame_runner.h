// SPDX-License-Identifier: MIT
// Who goes through the frames of a build: a loop on the calling thread, or a program's own threads.
#pragma once

#include <cstdint>

namespace kfx {

constexpr int32_t kMostFrameThreads = 16;

// What is done to each frame. All three get `user`; false gives the whole work up.
struct FrameWork {
    void* user;
    // On the thread that has started the work, for each frame in turn: `before` when all earlier frames are
    // finished, `after` when this one is. What is asked of the host belongs here. Null: nothing.
    bool (*before)(void* user, int32_t frame);
    // On any thread, several frames at a time. `worker` (0 to kMostFrameThreads - 1) has one frame at a time.
    bool (*transform)(void* user, int32_t frame, int32_t worker);
    bool (*after)(void* user, int32_t frame);
};

// A program's own way through the frames 0 to count - 1.
struct FrameRunner {
    int32_t threads;  // 1 to kMostFrameThreads
    // False: the work was given up. No function of the work runs any more when it returns.
    bool (*run)(int32_t threads, int32_t count, const FrameWork& work);
};

// Goes through the frames in order on the calling thread when `runner` is null.
bool RunFrames(const FrameRunner* runner, int32_t count, const FrameWork& work);

}  // namespace kfx
