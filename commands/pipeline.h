// SPDX-License-Identifier: MIT
// A command's jobs in turn. Between two of them the frames stand in true colour, so that nothing is lost: the
// palette and all that goes with it are the last one's.
#pragma once

#include <vector>

#include "commands/engine.h"
#include "commands/result_edits.h"
#include "commands/whole_facts.h"

namespace kfx::commands {

// What becomes of half-transparent pixels when the result gets a palette.
enum class HalfTransparency {
    Stay,       // the format holds them
    Threshold,  // they are drawn from half of the full alpha on, and hidden below
    Mix,        // onto a colour
};

struct PipelineOptions {
    // Effects that show a background colour beyond the picture's edges see repeated edge pixels instead.
    bool extendEdges = false;
    HalfTransparency halfTransparency = HalfTransparency::Stay;
    RgbColor matte;  // to mix them onto
    ResultEdits edits;
    WholeRun* whole = nullptr;  // where other runs have other frames of the animation; else null
};

struct PipelineNotes {
    bool thresholdApplied = false;  // to a pixel that was neither opaque nor hidden
};

// Makes every pixel of the frames opaque or hidden where the options ask for it.
void SettleHalfTransparency(const PipelineOptions& options, Animation* animation, PipelineNotes* notes);

// Whether all frames that stage `stage` gets are opaque, of the whole animation.
bool IsOpaqueAt(size_t stage, const Animation& animation, const PipelineOptions& options);

// Runs the jobs on the frames in true colour; the first of them is stage `firstStage`. False: `*failure` says
// why, and the animation is lost.
bool RunInTrueColor(const OpenEngine& engine, HostSession* session, std::vector<Job> jobs,
                    const PipelineOptions& options, Animation* animation, Failure* failure,
                    size_t firstStage = 0);

// Builds finished frames into session->built and session->record: edited as the options say, and with the
// palette of the last job, whose effect has been applied. False: `*failure` says why.
bool FinishFrames(const OpenEngine& engine, HostSession* session, const Job& last,
                  const PipelineOptions& options, Animation animation, PipelineNotes* notes,
                  Failure* failure);

// Finds what all frames of the session's source say together, for options.whole; every parameter that moves
// and every name is checked as for a build. Effects run only where that is needed, and nothing is built. The
// session's source is used up. False: `*failure` says why.
bool FindFacts(const OpenEngine& engine, HostSession* session, std::vector<Job> jobs,
               const PipelineOptions& options, Failure* failure);

// Whether effects have to run on all frames for that. `transparent`: the source is.
bool NeedsAllFrames(const std::vector<Job>& jobs, bool transparent);

// Builds the session's source through all jobs into session->built, with what the plug-in does not carry in
// session->record. Alpha follows the effects (alpha_ways.h). An opaque source with one job whose parameters
// stay is built at once.
// The session's source is used up. Where facts are to be found, nothing is built. False: `*failure` says why.
bool RunJobs(const OpenEngine& engine, HostSession* session, std::vector<Job> jobs,
             const PipelineOptions& options, PipelineNotes* notes, Failure* failure);

}  // namespace kfx::commands
