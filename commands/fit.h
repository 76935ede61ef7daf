// SPDX-License-Identifier: MIT
// apply --max-size: the result that looks best within a number of bytes.
#pragma once

#include <atomic>
#include <functional>

#include "commands/commands.h"
#include "commands/fit_search.h"

namespace kfx::commands {

struct FitSteps {
    PipelineOptions (*pipelineOptions)(const CommandLine& line);
    std::function<ResultOptions(const CommandLine& line)> resultOptions;
    EngineStart (*start)(const CommandLine& line, const CommandContext& context, HostSession* session);
    const std::atomic<bool>* stop = nullptr;  // null, or: the search fails soon after it is set
};

// Makes the finished frames of the session's source, which is used up, and has `search` look for settings.
using SearchWanted =
    std::function<bool(const FitWork& work, const Animation& wanted, const FitSubject& subject)>;
bool SearchFinished(const CommandLine& line, const CommandContext& context, const FitSteps& steps,
                    HostSession* session, const SearchWanted& search, Failure* failure);

// Makes the finished frames of the session's source once and looks for the settings. False: `*failure` says
// why nothing was found; `*found` has what was tried then as well. The session's source is used up.
bool FitToSize(const CommandLine& line, const CommandContext& context, const FitSteps& steps,
               HostSession* session, FitFound* found, Failure* failure);

// Writes the file that was found to the line's output.
bool WriteFound(const CommandLine& line, const FitFound& found, WrittenResult* written, std::string* error);

// Puts the table of what was tried before the report's text: one row each with options, bytes and look, the
// chosen one marked.
void ReportFit(const CommandLine& line, const FitFound& found, Report* report);

}  // namespace kfx::commands
