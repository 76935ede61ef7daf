// SPDX-License-Identifier: MIT
// The search for the settings that look best within a size.
//
// Settings are first judged on a sample of the frames, by bisection over the colours of a palette or the
// qualities of a lossy format. Then they are tried on all frames in the order of their estimated look; what
// the trials show corrects the estimates of the rest. The search does not depend on time: the same command
// takes the same settings everywhere.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "commands/fit_trial.h"

namespace kfx::commands {

struct FitFound {
    bool fits = false;
    size_t chosen = 0;            // among `tried`: the one that fits, else the smallest
    std::vector<FitTrial> tried;  // with all frames, in their order; without the bytes of their files
    std::vector<uint8_t> file;    // the chosen one's, if it fits
    size_t estimates = 0;         // trials on the sample
};

// Told what is tried next.
using TellTrial = std::function<void(const FitSettings& settings)>;

// False: `*failure` says why nothing could be tried.
bool SearchFit(const FitWork& work, const Animation& wanted, const FitSubject& subject, const TellTrial& tell,
               FitFound* found, Failure* failure);

}  // namespace kfx::commands
