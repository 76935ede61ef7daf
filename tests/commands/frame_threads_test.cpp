// SPDX-License-Identifier: MIT
// tests/builder/threaded_builds_test.cpp has whole builds.
#include "commands/frame_threads.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "host/floating_point_state.h"

namespace kfx::commands {
namespace {

constexpr int32_t kFrames = 50;

// Work that notes what is called, and gives up where it is told to.
struct Noted {
    std::atomic<int> transformed[kFrames] = {};
    std::atomic<bool> busy[kMostFrameThreads] = {};  // a worker is in the middle of a frame
    std::atomic<bool> workerShared = false;          // a worker had two frames at a time
    std::atomic<int> highestWorker = 0;
    std::vector<std::string> told;  // without a lock: one thread only
    const std::thread::id caller = std::this_thread::get_id();
    bool toldElsewhere = false;
    int32_t failAt = -1;
    int32_t stopBefore = -1;
    int32_t stopAfter = -1;
};

bool Note(Noted* noted, const char* what, int32_t frame) {
    noted->told.push_back(what + std::to_string(frame));
    noted->toldElsewhere |= std::this_thread::get_id() != noted->caller;
    return true;
}

bool Before(void* user, int32_t frame) {
    auto* noted = static_cast<Noted*>(user);
    return Note(noted, "before ", frame) && frame != noted->stopBefore;
}

bool Transform(void* user, int32_t frame, int32_t worker) {
    auto* noted = static_cast<Noted*>(user);
    if (noted->busy[worker].exchange(true)) noted->workerShared = true;
    ++noted->transformed[frame];
    for (int most = noted->highestWorker; most < worker;)
        if (noted->highestWorker.compare_exchange_weak(most, worker)) break;
    std::this_thread::yield();
    noted->busy[worker] = false;
    return frame != noted->failAt;
}

bool After(void* user, int32_t frame) {
    auto* noted = static_cast<Noted*>(user);
    return Note(noted, "after ", frame) && noted->transformed[frame] == 1 && frame != noted->stopAfter;
}

bool RunNoted(int threads, int32_t count, Noted* noted) {
    const FrameRunner runner = FramesOnThreads(threads);
    return RunFrames(&runner, count,
                     {.user = noted, .before = Before, .transform = Transform, .after = After});
}

TEST(FrameThreads, Transform_each_frame_once_and_tell_of_them_in_order_on_the_calling_thread) {
    for (const int threads : {1, 2, 3, 8, 16}) {
        for (const int32_t count : {0, 1, 2, kFrames}) {
            Noted expected, found;
            ASSERT_TRUE(
                RunFrames(nullptr, count,
                          {.user = &expected, .before = Before, .transform = Transform, .after = After}));
            EXPECT_TRUE(RunNoted(threads, count, &found)) << threads;
            EXPECT_EQ(expected.told, found.told) << threads;
            EXPECT_FALSE(found.toldElsewhere) << threads;
            EXPECT_FALSE(found.workerShared) << threads;
            EXPECT_LT(found.highestWorker, threads);
            for (int32_t i = 0; i < count; ++i) EXPECT_EQ(found.transformed[i], 1) << threads << ", " << i;
        }
    }
}

TEST(FrameThreads, A_failure_or_an_answer_of_the_host_ends_the_work) {
    for (const int threads : {1, 2, 8}) {
        for (int32_t Noted::*const stop : {&Noted::failAt, &Noted::stopBefore, &Noted::stopAfter}) {
            for (const int32_t frame : {0, 1, 20, kFrames - 1}) {
                Noted noted;
                noted.*stop = frame;
                EXPECT_FALSE(RunNoted(threads, kFrames, &noted)) << threads << ", frame " << frame;
                EXPECT_LE(noted.told.size(), 2u * static_cast<size_t>(frame) + 2);
            }
        }
    }
}

#if defined(__GNUC__) && defined(__x86_64__)
TEST(FrameThreads, All_compute_under_the_cores_floating_point_controls) {
    const FloatingPointState before = ReadFloatingPointState();
    FloatingPointState odd = before;
    odd.mxcsr |= 0x8040;  // small numbers are flushed
    SetFloatingPointState(odd);
    {
        const OwnFloatingPoint core;  // as the engine's
        static std::atomic<bool> other;
        other = false;
        const auto transform = [](void*, int32_t, int32_t) {
            if ((ReadFloatingPointState().mxcsr & 0xFFC0) != kCoreMxcsr) other = true;
            return true;
        };
        const FrameRunner runner = FramesOnThreads(4);
        EXPECT_TRUE(RunFrames(
            &runner, 100, {.user = nullptr, .before = nullptr, .transform = transform, .after = nullptr}));
        EXPECT_FALSE(other);
    }
    SetFloatingPointState(before);
}
#endif

TEST(FrameThreads, Are_as_many_as_asked_for_within_their_limits) {
    EXPECT_EQ(FramesOnThreads(-3).threads, 1);
    EXPECT_EQ(FramesOnThreads(5).threads, 5);
    EXPECT_EQ(FramesOnThreads(1000).threads, kMostFrameThreads);
    EXPECT_GE(UsableThreads(), 1);
    EXPECT_LE(UsableThreads(), kMostFrameThreads);
}

}  // namespace
}  // namespace kfx::commands
