// SPDX-License-Identifier: MIT
#include "commands/pipeline.h"

#include <utility>

#include "commands/alpha_pixels.h"
#include "commands/edges.h"
#include "commands/journey_frames.h"
#include "commands/plain_build.h"
#include "commands/stages.h"
#include "effects/effect_table.h"
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

// Whether the engine alone does it, as stage `stage`.
bool IsPlainBuild(const Job& job, size_t stage, const Animation& animation, const PipelineOptions& options) {
    const Margins margins = MarginsFor(job, animation, options);
    const bool opaque = IsOpaqueAt(stage, animation, options);
    return margins.columns == 0 && margins.rows == 0 && job.moving.empty() && opaque;
}

WholeFacts* FactsToFind(const PipelineOptions& options) {
    return options.whole && options.whole->use == WholeUse::Find ? options.whole->facts : nullptr;
}

WholeRun* PartOf(const PipelineOptions& options) {
    return options.whole && options.whole->use == WholeUse::Hold ? options.whole : nullptr;
}

// For the scope of a build: hands the engine what is known of the whole animation, and takes what it finds.
// One record for a stage is enough. A stage is one effect, and an effect that looks at all frames first has
// the same parameters in each of them: journey.cpp refuses others.
struct SharedFacts {
    // `isLast`: nothing is built behind it.
    SharedFacts(const PipelineOptions& options, StageFacts* stageFacts, bool isLast)
        : run(options.whole), stage(stageFacts) {
        if (!run) return;
        whole.use = run->use == WholeUse::Find && !isLast ? WholeUse::Note : run->use;
        if (run->use == WholeUse::Find) return;
        if (stage) whole.gathered = stage->gathered;
        whole.palette = run->facts->palette;
        whole.hasSeveralFrames = run->hasSeveralFrames;
        whole.framesBefore = isLast ? run->framesBefore : 0;
    }
    ~SharedFacts() {
        if (!run || run->use != WholeUse::Find) return;
        if (stage && whole.gathered.isKnown) stage->gathered = whole.gathered;
        if (whole.palette.isKnown) run->facts->palette = whole.palette;
    }
    SharedFacts(const SharedFacts&) = delete;
    SharedFacts& operator=(const SharedFacts&) = delete;

    Job With(Job job) {
        job.whole = run ? &whole : nullptr;
        return job;
    }

    WholeRun* const run;
    StageFacts* const stage;
    WholeAnimation whole;
};

// The facts of a stage; null where there are no other runs.
StageFacts* FactsAt(size_t stage, const PipelineOptions& options) {
    if (!options.whole) return nullptr;
    std::vector<StageFacts>& stages = options.whole->facts->stages;
    if (stages.size() <= stage) stages.resize(stage + 1);
    return &stages[stage];
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

// Whether the job's effect gathers something from all frames.
bool Gathers(const Job& job) {
    const Effect& effect = *EffectAt(static_cast<size_t>(job.effect));
    if (!effect.gathering) return false;
    KernelInput input = {};
    for (size_t i = 0; i < job.parameters.size(); ++i) {
        const Parameter& parameter = job.parameters[i];
        input.values[i] = ValueOf(job, parameter.name, parameter.value) - parameter.shownOffset;
    }
    return effect.gathering->wanted(input);
}

// Whether something is to be known of the frames that get the palette: their colours, or the hidden ones.
bool NeedsFinished(const Job& last, bool transparent) {
    return last.paletteUse == PaletteUse::Computed ||
           (transparent && last.paletteUse != PaletteUse::TrueColor);
}

// How many effects have to run on all frames when the finished ones are not needed: those that gather, with
// all before them, and those whose results may or may not be transparent.
size_t StagesToRun(const std::vector<Job>& jobs, bool transparent) {
    size_t stages = transparent ? jobs.size() - 1 : 0;
    for (size_t i = stages; i < jobs.size(); ++i) {
        if (Gathers(jobs[i])) stages = i + 1;
    }
    return stages;
}

// A job in true colour, with parameters that move or stay.
bool RunOneInTrueColor(const OpenEngine& engine, HostSession* session, const Job& job, size_t stage,
                       const PipelineOptions& options, Animation* animation, Failure* failure) {
    const bool opaque = IsOpaqueAt(stage, *animation, options);
    SharedFacts shared(options, FactsAt(stage, options), false);
    const auto run = [&](const Job& still, Animation* part) {
        return RunWithEdges(engine, session, shared.With(still), opaque, options, part, failure);
    };
    return job.moving.empty() ? run(job, animation)
                              : BuildMovingFrames(job, run, session, animation, PartOf(options));
}

bool CheckMovement(const std::vector<Job>& jobs, const Animation& animation, const PipelineOptions& options,
                   Failure* failure) {
    const WholeRun* const part = PartOf(options);
    const size_t frames = part ? part->timeline.starts.size() : animation.frames.size();
    for (const Job& job : jobs) {
        if (job.moving.empty() || frames > 1) continue;
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
    // Of a part, the palette is known already.
    if (job.mostColors > 0 && options.halfTransparency != HalfTransparency::Stay && record.transparent &&
        !PartOf(options) && --job.mostColors < kFewestColors) {
        *failure = {kExitBadCommand,
                    "transparent pixels take one entry of the palette; take --colors 3 or more."};
        return false;
    }
    const RgbColor hidden = PartOf(options) ? options.whole->facts->hidden : FrequentColor(animation.frames);
    if (WholeFacts* const facts = FactsToFind(options)) facts->hidden = hidden;
    for (Frame& frame : animation.frames) {
        FillWith(hidden, &frame.pixels);
        TakeAlphaOut(&frame.pixels);
        frame.transparent = false;
    }
    *session->source = std::move(animation);
    engine.engine.dropSource(engine.opened);
    SharedFacts shared(options, nullptr, true);
    if (!engine.engine.build(engine.opened, shared.With(job), false, failure)) return false;
    session->record = std::move(record);
    return true;
}

// The last job as a plain build.
bool BuildAtOnce(const OpenEngine& engine, const Job& last, size_t stage, const PipelineOptions& options,
                 Failure* failure) {
    SharedFacts shared(options, FactsAt(stage, options), true);
    return engine.engine.build(engine.opened, shared.With(last), false, failure);
}

}  // namespace

void SettleHalfTransparency(const PipelineOptions& options, Animation* animation, PipelineNotes* notes) {
    if (options.halfTransparency == HalfTransparency::Stay) return;
    for (Frame& frame : animation->frames) {
        NoteTransparency(&frame);
        if (!frame.transparent || !HasHalfTransparency(frame.pixels)) continue;
        if (options.halfTransparency == HalfTransparency::Mix)
            MixOnto(options.matte, &frame.pixels);
        else
            notes->thresholdApplied = ApplyThreshold(&frame.pixels);
        NoteTransparency(&frame);
    }
}

bool IsOpaqueAt(size_t stage, const Animation& animation, const PipelineOptions& options) {
    StageFacts* const facts = FactsAt(stage, options);
    if (PartOf(options)) return facts->opaque;
    const bool opaque = !HasAlpha(animation);
    if (facts) facts->opaque = opaque;
    return opaque;
}

bool RunInTrueColor(const OpenEngine& engine, HostSession* session, std::vector<Job> jobs,
                    const PipelineOptions& options, Animation* animation, Failure* failure,
                    size_t firstStage) {
    if (!CheckMovement(jobs, *animation, options, failure)) return false;
    for (size_t i = 0; i < jobs.size(); ++i) {
        Job& job = jobs[i];
        CompleteValues(&job);
        job.paletteUse = PaletteUse::TrueColor;
        job.dither = job.supercompress = job.comment = false;
        if (!RunOneInTrueColor(engine, session, job, firstStage + i, options, animation, failure))
            return false;
    }
    return true;
}

bool FinishFrames(const OpenEngine& engine, HostSession* session, const Job& last,
                  const PipelineOptions& options, Animation animation, PipelineNotes* notes,
                  Failure* failure) {
    ResultEdits edits = options.edits;
    if (PartOf(options)) edits.every = 1;
    if (!EditResult(edits, &animation)) {
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

bool NeedsAllFrames(const std::vector<Job>& jobs, bool transparent) {
    return NeedsFinished(jobs.back(), transparent) || StagesToRun(jobs, transparent) > 0;
}

bool FindFacts(const OpenEngine& engine, HostSession* session, std::vector<Job> jobs,
               const PipelineOptions& options, Failure* failure) {
    Animation& source = *session->source;
    const bool transparent = HasAlpha(source);
    options.whole->facts->stages.resize(jobs.size());
    PipelineNotes notes;
    if (!CheckMovement(jobs, source, options, failure)) return false;
    if (NeedsFinished(jobs.back(), transparent))
        return RunJobs(engine, session, std::move(jobs), options, &notes, failure);
    const size_t run = StagesToRun(jobs, transparent), all = jobs.size();
    Animation animation = std::move(source);
    jobs.resize(run);
    if (!RunInTrueColor(engine, session, std::move(jobs), options, &animation, failure)) return false;
    for (size_t stage = run; stage < all; ++stage) IsOpaqueAt(stage, animation, options);
    return true;
}

bool RunJobs(const OpenEngine& engine, HostSession* session, std::vector<Job> jobs,
             const PipelineOptions& options, PipelineNotes* notes, Failure* failure) {
    if (!CheckMovement(jobs, *session->source, options, failure)) return false;
    const bool isEdited = HasResultEdits(options.edits);
    if (!isEdited && jobs.size() == 1 && IsPlainBuild(jobs.front(), 0, *session->source, options))
        return BuildAtOnce(engine, jobs.front(), 0, options, failure);
    Animation animation = std::move(*session->source);
    Job last = jobs.back();
    jobs.pop_back();
    const size_t stage = jobs.size();
    if (!RunInTrueColor(engine, session, std::move(jobs), options, &animation, failure)) return false;
    if (!isEdited && IsPlainBuild(last, stage, animation, options)) {
        CompleteValues(&last);
        *session->source = std::move(animation);
        engine.engine.dropSource(engine.opened);
        return BuildAtOnce(engine, last, stage, options, failure);
    }
    return RunInTrueColor(engine, session, {last}, options, &animation, failure, stage) &&
           FinishFrames(engine, session, last, options, std::move(animation), notes, failure);
}

}  // namespace kfx::commands
