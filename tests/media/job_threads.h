// SPDX-License-Identifier: MIT
// Threads for the writers' jobs in tests. Those of the programs are in commands/.
#pragma once

#include <atomic>
#include <exception>
#include <thread>
#include <vector>

#include "media/job_runner.h"

namespace kfx::test {

inline bool RunOnThreads(int32_t threads, int32_t count, void* user, RunOneJob job) {
    std::atomic<int32_t> next = 0;
    std::atomic<bool> done = true;
    const auto work = [&](int32_t worker) {
        for (int32_t i = next++; i < count && done; i = next++)
            if (!job(user, i, worker)) done = false;
    };
    try {
        std::vector<std::jthread> others;
        others.reserve(static_cast<size_t>(threads));
        for (int32_t worker = 1; worker < threads; ++worker) others.emplace_back(work, worker);
        work(0);
    } catch (const std::exception&) {
        done = false;  // no memory for a thread
    }
    return done;
}

inline JobRunner JobThreads(int32_t threads) { return {.threads = threads, .run = RunOnThreads}; }

}  // namespace kfx::test
