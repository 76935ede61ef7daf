// SPDX-License-Identifier: MIT
// What the commands need of whoever runs the effects. There are two engines: the direct one calls them
// (direct_engine.h), the driven one loads the plug-in and moves the controls of its window, on Windows only.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "commands/exit_codes.h"
#include "commands/host_session.h"
#include "commands/job.h"
#include "commands/parameter.h"

namespace kfx::commands {

// With what an engine is opened.
struct EngineStart {
    HostSession* session = nullptr;  // what is built goes there; outlives the opened engine
    uint8_t capabilities = kHostTakesSupercompressed | kHostTakesTrueColor;
    // Options without a control in the plug-in's window.
    bool fastRemap = false;
    int ditherBrightness = -1;  // -1: the plug-in's default
    int ditherContrast = -1;
    int threads = 0;  // for frames, where the engine usesThreads; 0: as many as the process has processors
    int64_t seed = kNoSeed;  // of effects with random numbers, where the engine takes one
    void (*onProgress)(const HostSession& session) = nullptr;  // called while it works; may be null
};

// A constant record of functions. Those that return false have written why not into their Failure.
struct Engine {
    const void* options;        // the engine's own, handed to `open`
    bool usesThreads = false;   // builds several frames at a time
    bool takesSeed = false;     // else effects take the clock's second
    bool limitsColors = false;  // it knows Job::mostColors
    bool buildsParts = false;   // it knows Job::whole

    // An opened engine, which the other functions take. Null: `*failure` says why not. One at a time.
    void* (*open)(const void* options, const EngineStart& start, Failure* failure);
    void (*close)(void* opened);  // null is allowed

    std::string (*name)(void* opened);  // what the plug-in calls itself
    bool (*listEffects)(void* opened, std::vector<std::string>* names, Failure* failure);
    // The parameters of an effect (a row of listEffects) with their defaults, in the panel's order.
    bool (*listParameters)(void* opened, int effect, std::vector<Parameter>* parameters, Failure* failure);
    // Without the row for a source's own palette.
    bool (*listPalettes)(void* opened, std::vector<std::string>* names, Failure* failure);
    // The session has another source: the next build takes it.
    void (*dropSource)(void* opened);
    // Builds the session's source into session->built. `more`: another build follows.
    bool (*build)(void* opened, const Job& job, bool more, Failure* failure);
};

// An opened engine for a scope.
struct OpenEngine {
    OpenEngine(const Engine& opening, const EngineStart& start, Failure* failure)
        : engine(opening), opened(opening.open(opening.options, start, failure)) {}
    ~OpenEngine() { engine.close(opened); }
    OpenEngine(const OpenEngine&) = delete;
    OpenEngine& operator=(const OpenEngine&) = delete;

    explicit operator bool() const { return opened != nullptr; }

    const Engine& engine;
    void* const opened;
};

}  // namespace kfx::commands
