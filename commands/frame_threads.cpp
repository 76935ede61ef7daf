// SPDX-License-Identifier: MIT
#include "commands/frame_threads.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <memory>
#include <new>
#include <thread>
#ifdef __linux__
#include <sched.h>
#endif

#include "host/floating_point_state.h"

namespace kfx::commands {
namespace {

// Work that several threads share. Frames are given out in their order.
struct SharedWork {
    const FrameWork& work;
    const int32_t count;
    // finished[i] says that frame i is transformed; whoever reads it sees the result.
    std::atomic<bool>* const finished;
    std::atomic<int32_t> next = 0;
    std::atomic<bool> failed = false;  // no other frame is begun
    int32_t told = 0;                  // frames whose `after` has been called; of the calling thread
};

// Whether the frame may be worked on: the host has been told of those before it.
bool Begin(SharedWork* shared, int32_t frame) {
    const FrameWork& work = shared->work;
    return frame >= shared->count || !work.before || work.before(work.user, frame);
}

// Tells what is finished without a gap. False: the work is given up.
bool TellFinished(SharedWork* shared) {
    const FrameWork& work = shared->work;
    while (shared->told < shared->count && shared->finished[shared->told].load(std::memory_order_acquire)) {
        if (work.after && !work.after(work.user, shared->told)) return false;
        if (!Begin(shared, ++shared->told)) return false;
    }
    return true;
}

// Transforms the next frame that nobody has. False: there is none, or the work has failed.
bool TransformNext(SharedWork* shared, int32_t worker) {
    if (shared->failed.load(std::memory_order_relaxed)) return false;
    const int32_t frame = shared->next.fetch_add(1, std::memory_order_relaxed);
    if (frame >= shared->count) return false;
    if (shared->work.transform(shared->work.user, frame, worker)) {
        shared->finished[frame].store(true, std::memory_order_release);
        return true;
    }
    shared->failed.store(true, std::memory_order_relaxed);
    return false;
}

void RunWorker(SharedWork* shared, int32_t worker) {
    const OwnFloatingPoint core;
    while (TransformNext(shared, worker)) {
    }
}

// Joins its threads at the end of its scope.
struct Workers {
    std::jthread threads[kMostFrameThreads - 1];
};

// One thread fewer than `threads`, since the calling one works, too.
void StartWorkers(SharedWork* shared, int32_t threads, Workers* workers) {
    for (int32_t worker = 1; worker < threads; ++worker) {
        try {
            workers->threads[worker - 1] = std::jthread(RunWorker, shared, worker);
        } catch (const std::exception&) {
            return;  // no thread, or no memory for one: the others do its work
        }
    }
}

// The functions of the work throw nothing, and what calls this function lets no exception through.
bool RunOnThreads(int32_t threads, int32_t count, const FrameWork& work) {
    threads = std::min(threads, count);
    if (threads < 2) return RunFrames(nullptr, count, work);
    const std::unique_ptr<std::atomic<bool>[]> finished(new (std::nothrow)
                                                            std::atomic<bool>[static_cast<size_t>(count)]());
    if (!finished) return RunFrames(nullptr, count, work);
    SharedWork shared = {.work = work, .count = count, .finished = finished.get()};
    if (!Begin(&shared, 0)) return false;
    {
        Workers workers;
        StartWorkers(&shared, threads, &workers);
        while (TransformNext(&shared, 0)) {
            if (!TellFinished(&shared)) shared.failed.store(true, std::memory_order_relaxed);
        }
    }
    return !shared.failed.load(std::memory_order_relaxed) && TellFinished(&shared);
}

bool RunJobsOnThreads(int32_t threads, int32_t count, void* user, RunOneJob job) {
    return RunOnThreads(threads, count,
                        {.user = user, .before = nullptr, .transform = job, .after = nullptr});
}

}  // namespace

int UsableThreads() {
#ifdef __linux__
    // The library counts the machine's processors; a process may be limited to some of them.
    cpu_set_t usable;
    if (sched_getaffinity(0, sizeof usable, &usable) == 0)
        return std::clamp(CPU_COUNT(&usable), 1, int{kMostFrameThreads});
#endif
    return std::clamp(static_cast<int>(std::thread::hardware_concurrency()), 1, int{kMostFrameThreads});
}

FrameRunner FramesOnThreads(int threads) {
    return {.threads = std::clamp(threads, 1, int{kMostFrameThreads}), .run = RunOnThreads};
}

JobRunner JobsOnThreads(int threads) {
    const FrameRunner runner = FramesOnThreads(threads > 0 ? threads : UsableThreads());
    return {.threads = runner.threads, .run = RunJobsOnThreads};
}

}  // namespace kfx::commands
