// SPDX-License-Identifier: MIT
#include "commands/fit_choices.h"

#include <algorithm>
#include <utility>

#include "commands/fit_look.h"

namespace kfx::commands {
namespace {

// Somebody waits for all of them.
constexpr size_t kMostTrials = 5;

struct WayRow {
    FitWay way;
    bool scale = false;
    bool frames = false;
    bool lossy = false;
};

constexpr WayRow kWays[] = {
    {.way = FitWay::Colors},
    {.way = FitWay::Scale, .scale = true},
    {.way = FitWay::Frames, .frames = true},
    {.way = FitWay::Lossy, .lossy = true},
    {.way = FitWay::ScaleAndLossy, .scale = true, .lossy = true},
};

CommandLine LineOf(const CommandLine& line, const WayRow& row) {
    CommandLine own = line;
    own.fit.scale = row.scale;
    own.fit.frames = row.frames;
    own.fit.lossy = row.lossy;
    own.fit.givesUp = row.scale || row.frames || row.lossy;
    own.fit.mostTrials = kMostTrials;
    return own;
}

void NoteSmallest(const FitFound& found, FitChoices* choices) {
    for (const FitTrial& trial : found.tried) {
        if (choices->fewestBytes == 0 || trial.bytes < choices->fewestBytes)
            choices->fewestBytes = trial.bytes;
    }
}

bool IsUnchanged(const FitTrial& trial, const ResultEdits& edits) {
    return trial.look >= kExactLook && trial.settings.edits.shrink == edits.shrink &&
           trial.settings.edits.every == edits.every;
}

// What is exact among what was tried looks best, and so has been chosen.
bool FindWay(const FitWork& work, const Animation& wanted, const FitSubject& subject, const WayRow& row,
             const TellChoice& tell, FitChoices* choices, Failure* failure) {
    const CommandLine line = LineOf(work.line, row);
    const FitWork own = {line,     work.engine, work.session, work.pipelineOptions, work.resultOptions,
                         work.stop};
    FitFound found;
    const auto tellTrial = [&](const FitSettings& settings) { tell(row.way, settings); };
    if (!SearchFit(own, wanted, subject, tellTrial, &found, failure)) return false;
    NoteSmallest(found, choices);
    if (!found.fits) return true;
    FitTrial& trial = found.tried[found.chosen];
    trial.file = std::move(found.file);
    choices->isUnchanged = row.way == FitWay::Colors && IsUnchanged(trial, work.line.resultEdits);
    choices->found.push_back({row.way, std::move(trial)});
    return true;
}

}  // namespace

bool FindFitChoices(const CommandLine& line, const CommandContext& context, const FitSteps& steps,
                    HostSession* session, const TellChoice& tell, FitChoices* choices, Failure* failure) {
    *choices = {};
    const auto search = [&](const FitWork& work, const Animation& wanted, const FitSubject& subject) {
        for (const WayRow& row : kWays) {
            if (choices->isUnchanged || choices->found.size() == kMostFitChoices) break;
            if (row.frames && !subject.isAnimated) continue;
            if (!FindWay(work, wanted, subject, row, tell, choices, failure)) return false;
        }
        return true;
    };
    return SearchFinished(line, context, steps, session, search, failure);
}

}  // namespace kfx::commands
