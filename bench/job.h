// SPDX-License-Identifier: MIT
// What is timed: the effects and the steps of a build, each under a name that other programs know as well.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "bench/shot.h"

namespace kfx::bench {

// One run of a job, which is what is timed. False: it failed.
using Run = std::function<bool()>;

struct Job {
    std::string name;       // "gaussian-blur", "dither"
    std::string variant;    // "default", "heavy"; "later": a later frame of a build, with the tables kept
    std::string operation;  // what is done, for a reader
    bool allFrames;         // works on all frames of a shot instead of the first one
    // Makes a run ready, with everything that is not to be timed. The shot must outlive the run. Empty: the
    // job is not for this shot.
    std::function<Run(const Shot&)> prepare;
};

// Every effect at its built-in settings and at heavy ones, on the first frame of a shot; where an effect
// keeps tables from frame to frame, also a later frame. `reference`: the literal kernels instead.
std::vector<Job> ListEffectJobs(bool reference);

// The steps of a build, on all frames of a shot: palette, remapping, supercompression, GIF files; and
// scaling, on the first frame. `reference`: the literal ones instead, where there is one.
std::vector<Job> ListBuildJobs(bool reference);

// Both, one list after the other.
std::vector<Job> ListJobs(bool reference);

// The bytes of a GIF of the shot's frames with one palette of 256 colours; empty when it could not be made.
std::vector<uint8_t> GifOf(const Shot& shot);

}  // namespace kfx::bench
