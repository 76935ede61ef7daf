// SPDX-License-Identifier: MIT
// The host's side of the host interface: one session serves one opening of the plug-in's window, or of an
// engine that asks in its place.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>

#include "commands/built_animation.h"
#include "commands/source_block.h"
#include "host/host_records.h"
#include "media/animation.h"

namespace kfx::commands {

struct HostSession;

// The status text of a build while its effect makes the frames.
inline constexpr char kEffectStatus[] = "Building";

// What needs a user. A null entry declines.
struct HostActions {
    // Asks for a file; `*path` is UTF-8.
    bool (*chooseAnimation)(HostSession* session, void* owner, std::string* path) = nullptr;
    bool (*chooseColor)(HostSession* session, void* owner, const uint8_t* palette, uint32_t* color) = nullptr;
    bool (*showHelp)(HostSession* session, const std::string& reference) = nullptr;
    void (*showProgress)(HostSession* session) = nullptr;
    void (*sourceOpened)(HostSession* session) = nullptr;  // another source has been read
    void (*taskClosed)(HostSession* session) = nullptr;    // session->built is complete
    void (*reportError)(HostSession* session, void* owner, const std::string& message) = nullptr;
};

struct HostSession {
    HostContext context = {};
    HostActions actions;
    void* user = nullptr;  // of whoever made the actions

    std::string sourcePath;       // UTF-8
    Animation* source = nullptr;  // read from sourcePath; its owner outlives the session
    bool offerSource = true;      // the next request gets the source, whatever it names
    bool offerAgain = true;       // and so does each one after it; else they ask the user
    bool keepSource = false;      // else the source's pixels are freed once they are handed over
    SourceRecord record;
    BuiltAnimation built;

    uint32_t windowWidth = 0;  // what the host remembers
    uint32_t windowHeight = 0;

    // Written on the plug-in's thread, read by whoever watches it.
    std::atomic<int> animationsOpened{0};
    std::atomic<int> animationsRefused{0};  // no memory for the block
    std::atomic<int> tasksClosed{0};
    std::atomic<uint64_t> requestsAnswered{0};
    std::atomic<int> progressCurrent{0};
    std::atomic<int> progressTotal{0};
    // Where a build is a part of a larger one: frames of the builds before it, and of all. 0: it is not.
    std::atomic<int> progressBefore{0};
    std::atomic<int> progressWhole{0};
    mutable std::mutex statusLock;
    std::string status;  // under statusLock

    // How long effects have worked: from their status text to the next one, or to the task's end.
    std::atomic<int64_t> effectMicroseconds{0};
    std::chrono::steady_clock::time_point effectSince = {};
    bool effectWorks = false;  // since effectSince
};

// Makes the session the one that answers, with the capability bits given. The host interface carries no
// context of the host's own, so only one session can be current.
void BeginSession(HostSession* session, uint8_t capabilities);
void EndSession();

}  // namespace kfx::commands
