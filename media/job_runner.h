// SPDX-License-Identifier: MIT
// Who does the jobs of a writer that do not depend on each other: a loop on the calling thread, or the
// threads of the program that writes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <new>

namespace kfx {

// Job `number`, done by `worker`, which has one job at a time. False: it has failed.
using RunOneJob = bool (*)(void* user, int32_t number, int32_t worker);

// A program's own way through the jobs 0 to count - 1.
struct JobRunner {
    int32_t threads = 1;  // workers have the numbers 0 to threads - 1
    // Calls job(user, ...) once for each number, on any thread and several at a time. False: a job has
    // failed; of the others some may not have been begun. No job runs any more when it returns. Null: there
    // are no threads.
    bool (*run)(int32_t threads, int32_t count, void* user, RunOneJob job) = nullptr;
};

// The workers that so many jobs get, at least one.
inline int32_t WorkersFor(const JobRunner& runner, size_t jobs) {
    const size_t threads = runner.run && runner.threads > 1 ? static_cast<size_t>(runner.threads) : 1;
    return static_cast<int32_t>(jobs < 2 ? 1 : jobs < threads ? jobs : threads);
}

// Calls work(number, worker) for each number below `count`, in order when there is one worker. Throws
// std::bad_alloc when a job did.
template <typename Work>
void RunJobs(const JobRunner& runner, size_t count, Work work) {
    const int32_t workers = WorkersFor(runner, count);
    if (workers == 1) {
        for (size_t i = 0; i < count; ++i) work(i, size_t{0});
        return;
    }
    // An exception must not leave a thread.
    const RunOneJob job = [](void* user, int32_t number, int32_t worker) {
        try {
            (*static_cast<Work*>(user))(static_cast<size_t>(number), static_cast<size_t>(worker));
            return true;
        } catch (const std::exception&) {
            return false;
        }
    };
    if (!runner.run(workers, static_cast<int32_t>(count), &work, job)) throw std::bad_alloc();
}

}  // namespace kfx
