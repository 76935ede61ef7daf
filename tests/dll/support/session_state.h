// SPDX-License-Identifier: MIT
// What a session's threads share: the test's, the window's and the watcher's.
#pragma once

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tests/dll/support/memory_ledger.h"
#include "tests/dll/support/plugin_session.h"
#include "tests/dll/support/system_stand_ins.h"

namespace kfx::test {

struct PluginSession::State {
    // Makes the session's folder, loads the DLL and takes its imports. They go when the state goes.
    State(FakeHost& fakeHost, const SessionOptions& sessionOptions);
    ~State();
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    FakeHost& host;
    const SessionOptions options;
    const std::string folder;
    const HMODULE library;
    std::unique_ptr<MemoryLedger> ledger;
    std::unique_ptr<SystemStandIns> standIns;

    std::mutex mutex;  // guards what follows
    std::condition_variable changed;
    HWND window = nullptr;    // known from its first idle moment on
    bool markerSeen = false;  // since then no idle moment
    bool idle = false;
    bool closed = false;
    uint64_t result = 0;
    FloatingPointControls controlsAfter;
    std::vector<FloatingPointControls> controlsSeen;
    std::vector<std::string> messages;

    std::atomic<bool> ending{false};
    std::atomic<size_t> stepsDone{0};  // times that the window came to rest, boxes that were answered
    std::atomic<bool> messagesHeld{false};
    std::atomic<DWORD> windowThread{0};
    std::thread runner;
    std::thread watcher;
};

constexpr UINT kMarker = WM_APP + 77;  // posted to learn when everything before it has been handled

// The window's thread: runs the window until it closes.
void RunWindow(PluginSession::State* state);

// The watcher's thread: answers message boxes, and ends a test program whose window gives no sign of life,
// neither a step done nor a request to the host.
void Watch(PluginSession::State* state);

// A visible window of the thread with this caption; null: none.
HWND FindBox(DWORD thread, const char* caption);

}  // namespace kfx::test
