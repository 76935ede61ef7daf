// SPDX-License-Identifier: MIT
// Several files within a size that give up different things, for somebody who chooses among them.
#pragma once

#include <functional>
#include <vector>

#include "commands/fit.h"

namespace kfx::commands {

enum class FitWay {
    Colors,  // the frames all and in full size
    Scale,
    Frames,  // only every second one, or every third
    Lossy,
    ScaleAndLossy,
};

struct FitChoice {
    FitWay way = FitWay::Colors;
    FitTrial trial;  // with its file
};

struct FitChoices {
    std::vector<FitChoice> found;  // in the order of the ways, kMostFitChoices at most
    bool isUnchanged = false;      // the only one shows exactly the frames
    uint64_t fewestBytes = 0;      // of all that was tried
};

constexpr size_t kMostFitChoices = 4;

// Told what is tried next.
using TellChoice = std::function<void(FitWay way, const FitSettings& settings)>;

// Looks for the best file of each way within line.fit.mostBytes. A way that does not go with the frames, or
// in which nothing fits, is left out; then the last way is looked at as well. Frames that fit without a
// change are the only choice. False: `*failure` says why nothing could be tried. The session's source is
// used up.
bool FindFitChoices(const CommandLine& line, const CommandContext& context, const FitSteps& steps,
                    HostSession* session, const TellChoice& tell, FitChoices* choices, Failure* failure);

}  // namespace kfx::commands
