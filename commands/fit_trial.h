// SPDX-License-Identifier: MIT
// One trial of a search: finished frames with some settings, as a file in memory.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "commands/engine.h"
#include "commands/fit_settings.h"
#include "commands/pipeline.h"
#include "commands/result_files.h"

namespace kfx::commands {

// With what trials are made.
struct FitWork {
    const CommandLine& line;
    const OpenEngine& engine;
    HostSession* session;
    PipelineOptions (*pipelineOptions)(const CommandLine& line);
    std::function<ResultOptions(const CommandLine& line)> resultOptions;
    const std::atomic<bool>* stop = nullptr;  // null, or: no more trials are made once it is set
};

struct FitTrial {
    FitSettings settings;
    uint64_t bytes = 0;        // of the file
    uint64_t recipeBytes = 0;  // of a sample's trial: what the result's recipe takes, about
    double look = 0;           // decibels; see fit_look.h
    size_t frames = 0;
    size_t colors = 0;
    int width = 0;
    int height = 0;
    std::string note;         // WrittenResult's
    std::string fingerprint;  // the same
    PipelineNotes notes;
    std::vector<uint8_t> file;
};

enum class TrialEnd {
    Done,
    Impossible,  // these settings do not go with these frames
    Failed,      // `*failure` says why
};

// `wanted` are the finished frames in true colour and full size.
TrialEnd MakeTrial(const FitWork& work, const Animation& wanted, const FitSettings& settings, FitTrial* trial,
                   Failure* failure);
// The same with frames of a sample. The file has no recipe, whose fingerprint would take time;
// trial->recipeBytes says how many bytes it takes.
TrialEnd MakeSampleTrial(const FitWork& work, const Animation& wanted, const FitSettings& settings,
                         FitTrial* trial, Failure* failure);

// A part of an animation by which settings can be judged: runs of neighbouring frames, because files store
// what changes, and of large ones the middle of the picture.
struct FitSample {
    Animation frames;     // without comment and metadata
    Animation still;      // the first of them
    double parts = 1;     // how many times as many pixels there are in all
    uint64_t beside = 0;  // bytes of comment and metadata
};

FitSample TakeSample(const CommandLine& line, const Animation& wanted);

}  // namespace kfx::commands
