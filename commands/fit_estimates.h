// SPDX-License-Identifier: MIT
// What settings would come to, judged on a sample of the frames.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "commands/fit_search.h"

namespace kfx::commands {

struct FitEstimate {
    FitSettings settings;
    double bytes = 0;
    double look = 0;
    bool tried = false;       // with all frames
    bool impossible = false;  // these settings do not go with these frames
};

struct FitEstimates {
    const FitWork& work;
    const FitSubject& subject;
    const TellTrial& tell;
    uint64_t mostBytes;
    FitSample sample;
    std::vector<FitEstimate> pool;  // each with settings of its own
    size_t firstThatFits = 0;       // the step of the latest group
};

// Estimates settings, unless that has been done: their place in the pool. False: `*failure` says why not.
bool EstimateSettings(FitEstimates* estimates, const FitSettings& settings, size_t* place, Failure* failure);

// Puts into the pool what has a chance of being the best within the size. False: `*failure` says why not.
bool EstimateAll(FitEstimates* estimates, Failure* failure);

}  // namespace kfx::commands
