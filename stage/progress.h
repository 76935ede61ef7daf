// SPDX-License-Identifier: MIT
// How far a long piece of work is: written by the thread that does it, shown by the window.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>

#include <windows.h>

namespace kfx::stage {

struct Progress {
    std::atomic<int> done{0};
    std::atomic<int> total{0};
    std::atomic<bool> announced{false};  // the window has been told and has not looked yet
    std::atomic<bool> stop{false};       // the user does not want the rest
    std::mutex lock;
    std::string text;    // under the lock
    uint64_t since = 0;  // when this text began, in milliseconds of the clock; under the lock
};

// What the window shows of it.
struct ShownProgress {
    std::string text;
    int done = 0;
    int total = 0;         // 0: nobody knows
    std::string timeLeft;  // empty while it cannot be told
};

// For the window, before another piece of work notes its state here: nothing is known of the one before.
void Restart(Progress* progress);

// For the working thread: notes the state and tells the window once until it looks. An empty text keeps the
// one before.
void NoteProgress(Progress* progress, HWND window, const std::string& text, int done, int total);

// For the window: asks for the end, unless no part is being done. False: nothing was asked.
bool AskToStop(Progress* progress);

// For the working thread, when a build has ended or failed: tells the window, and what comes next has not
// been stopped.
void EndBuild(Progress* progress, HWND window);

// For the window.
ShownProgress LookAtProgress(Progress* progress, uint64_t now);

// "about 12 s left" for so many milliseconds of work on `done` of `total` parts; empty in the first second.
std::string TimeLeftText(uint64_t milliseconds, int done, int total);

}  // namespace kfx::stage
