// SPDX-License-Identifier: MIT
#include "commands/pipeline.h"

#include <utility>

#include "commands/alpha_pixels.h"
#include "commands/edges.h"
#include "commands/journey_frames.h"
#include "commands/plain_build.h"
#include "commands/stages.h"
#include "media/readers.h"

namespace kfx::commands {
namespace {

constexpr int kFewestColors = 2;  // of a palette

// The last job, without its effect.
bool MakePaletteJob(const OpenEngine& engine, const Job& last, Job* job, Failure* failure) {
    if (!ResolveEffectJob(UnchangingEffect(), engine.engine, engine.opened, job, failure)) {
        if (failure->exitCode == kExitBadCommand)
            *failure = {kExitEngine, "the plug-in has no effect by which finished frames get a palette."};
        return false;
    }
    job->paletteUse = last.paletteUse;
    job->palette = last.palette;
    job->mostColors = last.mostColors;
    job->dither = last.dither;
    job->supercompress = last.supercompress;
    job->comment = last.comment;
    CompleteValues(job);
    return true;
}

Margins MarginsFor(const Job& job, const Animation& animation, const PipelineOptions& options) {
    return options.extendEdges ? EdgeMargins(job, animation.width, animation.height) : Margins{};
}

// Whether the engine alone does it.
bool IsPlainBuild(const Job& job, const Animation& animation, const PipelineOptions& options) {
    const Margins margins = MarginsFor(job, animation, options);
    return margins.columns == 0 && margins.rows == 0 && job.moving.empty() && !HasAlpha(animation);
}

bool RunWithEdges(const OpenEngine& engine, HostSession* session, const Job& job, bool opaque,
                  const PipelineOptions& options, Animation* animation, Failure* failure) {
    const Margins margins = MarginsFor(job, *animation, options);
    if (margins.columns == 0 && margins.rows == 0)
        return RunStageOfPart(engine, session, job, opaque, animation, failure);
    WidenFrames(margins, animation);
    if (!RunStageOfPart(engine, session, job, opaque, animation, failure)) return false;
    CropFrames(margins, animation);
    return true;
}

// A job in true colour, with parameters that move or stay.
bool RunOneInTrueColor(const OpenEngine& engine, HostSession* session, const Job& job,
                       const PipelineOptions& options, Animation* animation, Failure* failure) {
    const bool opaque = !HasAlpha(*animation);
    const auto run = [&](const Job& still, Animation* part) {
        return RunWithEdges(engine, session, still, opaque, options, part, failure);
    };
    return job.moving.empty() ? run(job, animation) : BuildMovingFrames(job, run, session, animation);
}

bool CheckMovement(const std::vector<Job>& jobs, const Animation& animation, Failure* failure) {
    for (const Job& job : jobs) {
        if (job.moving.empty() || animation.frames.size() > 1) continue;
        *failure = {kExitBadCommand, job.moving[0].parameter.name +
                                         " cannot move within one frame; --frames N makes a still picture an "
                                         "animation of N frames."};
        return false;
    }
    return true;
}

// Puts finished frames onto the palette of the last job. The palette is computed from visible colours.
bool BuildPalette(const OpenEngine& engine, HostSession* session, const Job& last,
                  const PipelineOptions& options, Animation animation, Failure* failure) {
    Job job;
    if (!MakePaletteJob(engine, last, &job, failure)) return false;
    SourceRecord record = MakeSourceRecord(animation);
    if (job.mostColors > 0 && options.halfTransparency != HalfTransparency::Stay && record.transparent &&
        --job.mostColors < kFewestColors) {
        *failure = {kExitBadCommand,
                    "transparent pixels take one entry of the palette; take --colors 3 or more."};
        return false;
    }
    FillWithFrequent(&animation.frames);
    for (Frame& frame : animation.frames) {
        TakeAlphaOut(&frame.pixels);
        frame.transparent = false;
    }
    *session->source = std::move(animation);
    engine.engine.dropSource(engine.opened);
    if (!engine.engine.build(engine.opened, job, false, failure)) return false;
    session->record = std::move(record);
    return true;
}

}  // namespace

void SettleHalfTransparency(const PipelineOptions& options, Animation* animation, PipelineNotes* notes) {
    if (options.halfTransparency == HalfTransparency::Stay) return;
    for (Frame& frame : animation->frames) {
        NoteTransparency(&frame);
        if (!frame.transparent) continue;
        if (options.halfTransparency == HalfTransparency::Mix) MixOnto(options.matte, &frame.pixels);
        if (ApplyThreshold(&frame.pixels)) notes->thresholdApplied = true;
        NoteTransparency(&frame);
    }
}

bool RunInTrueColor(const OpenEngine& engine, HostSession* session, std::vector<Job> jobs,
                    const PipelineOptions& options, Animation* animation, Failure* failure) {
    if (!CheckMovement(jobs, *animation, failure)) return false;
    for (Job& job : jobs) {
        CompleteValues(&job);
        job.paletteUse = PaletteUse::TrueColor;
        job.dither = job.supercompress = job.comment = false;
        if (!RunOneInTrueColor(engine, session, job, options, animation, failure)) return false;
    }
    return true;
}

bool FinishFrames(const OpenEngine& engine, HostSession* session, const Job& last,
                  const PipelineOptions& options, Animation animation, PipelineNotes* notes,
                  Failure* failure) {
    if (!EditResult(options.edits, &animation)) {
        *failure = {kExitEngine, "there is not enough memory to shrink the frames."};
        return false;
    }
    SettleHalfTransparency(options, &animation, notes);
    if (last.paletteUse != PaletteUse::TrueColor)
        return BuildPalette(engine, session, last, options, std::move(animation), failure);
    session->record = MakeSourceRecord(animation);
    session->built = PlainBuild(&animation);
    return true;
}

bool RunJobs(const OpenEngine& engine, HostSession* session, std::vector<Job> jobs,
             const PipelineOptions& options, PipelineNotes* notes, Failure* failure) {
    if (!CheckMovement(jobs, *session->source, failure)) return false;
    const bool isEdited = HasResultEdits(options.edits);
    if (!isEdited && jobs.size() == 1 && IsPlainBuild(jobs.front(), *session->source, options))
        return engine.engine.build(engine.opened, jobs.front(), false, failure);
    Animation animation = std::move(*session->source);
    Job last = jobs.back();
    jobs.pop_back();
    if (!RunInTrueColor(engine, session, std::move(jobs), options, &animation, failure)) return false;
    if (!isEdited && IsPlainBuild(last, animation, options)) {
        CompleteValues(&last);
        *session->source = std::move(animation);
        engine.engine.dropSource(engine.opened);
        return engine.engine.build(engine.opened, last, false, failure);
    }
    return RunInTrueColor(engine, session, {last}, options, &animation, failure) &&
           FinishFrames(engine, session, last, options, std::move(animation), notes, failure);
}

}  // namespace kfx::commands
