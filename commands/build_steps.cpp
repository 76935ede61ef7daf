// SPDX-License-Identifier: MIT
#include "commands/build_steps.h"

#include <algorithm>
#include <utility>

#include "commands/alpha_pixels.h"
#include "commands/frame_threads.h"
#include "commands/plain_build.h"

namespace kfx::commands {
namespace {

// Into session->built, by the engine. Everything of the engine is gone when this returns: its memory is
// needed for writing.
bool BuildByEngine(const CommandLine& line, const CommandContext& context, WholeRun* whole,
                   HostSession* session, PipelineNotes* notes, Failure* failure) {
    if (!CheckThreads(line, context.engine, failure)) return false;
    if (line.colors > 0 && !context.engine.limitsColors) {
        *failure = {kExitBadCommand,
                    "the plug-in's window has no control for --colors; leave it out, or leave out "
                    "--through-plugin."};
        return false;
    }
    const OpenEngine engine(context.engine, StartOf(line, context, session), failure);
    PipelineOptions options = PipelineOptionsOf(line);
    options.whole = whole;
    std::vector<Job> jobs;
    if (!engine ||
        !ResolveJobs(line, HasOwnPalette(*session->source), context.engine, engine.opened, &jobs, failure))
        return false;
    return whole && whole->use == WholeUse::Find
               ? FindFacts(engine, session, std::move(jobs), options, failure)
               : RunJobs(engine, session, std::move(jobs), options, notes, failure);
}

// Whether a result without an effect needs no palette that is computed from it.
bool KeepsColors(const CommandLine& line, const WholeRun* whole, const Animation& finished) {
    if (!line.keepsColors) return false;
    if (whole && whole->use == WholeUse::Hold) return whole->facts->keepsColors;
    const bool keeps = FitsGifPalettes(finished, JobsOnThreads(line.threads));
    if (whole) whole->facts->keepsColors = keeps;
    return keeps;
}

bool AllIndexed(const Animation& animation) {
    return std::all_of(animation.frames.begin(), animation.frames.end(),
                       [](const Frame& frame) { return frame.indexed; });
}

// Straight from the source's pixels to a GIF. Returns false where the frames are needed in between, where the
// colours do not fit palettes, and where all frames have indices already.
bool BuildGifAtOnce(const CommandLine& line, const WholeRun* whole, HostSession* session) {
    Animation& source = *session->source;
    if (!line.keepsColors || whole || line.format != "gif" || line.journeys.seamless || AllIndexed(source))
        return false;
    session->record = MakeRecordWithoutAlpha(source);
    GifAnimation gif;
    if (!MakeGifOfSource(source, session->record, JobsOnThreads(line.threads), &gif)) return false;
    session->built = {};
    session->built.gif = std::move(gif);
    session->built.complete = true;
    source.frames.clear();
    return true;
}

}  // namespace

PipelineOptions PipelineOptionsOf(const CommandLine& line) {
    PipelineOptions options;
    unsigned color = 0;
    options.extendEdges = line.edges == "extend";
    options.edits = line.resultEdits;
    if (line.format != "gif") return options;
    options.halfTransparency = HalfTransparency::Threshold;
    if (ParseColor(line.matte, &color)) {
        options.halfTransparency = HalfTransparency::Mix;
        options.matte = {static_cast<uint8_t>(color), static_cast<uint8_t>(color >> 8),
                         static_cast<uint8_t>(color >> 16)};
    }
    return options;
}

EngineStart StartOf(const CommandLine& line, const CommandContext& context, HostSession* session) {
    EngineStart start;
    start.session = session;
    // A GIF's frames stand on palettes; those between two effects, those with alpha, widened and edited ones,
    // and those with values of their own do not yet.
    if (line.format == "gif" && line.effects.size() == 1 && !HasJourney(line.effects[0]) &&
        line.edges != "extend" && !HasResultEdits(line.resultEdits) && line.fit.mostBytes == 0 &&
        !HasAlpha(*session->source)) {
        start.capabilities = kHostTakesSupercompressed;
    }
    start.fastRemap = line.fastRemap;
    start.ditherBrightness = line.ditherBrightness;
    start.ditherContrast = line.ditherContrast;
    start.seed = line.recipe.seed;
    start.threads = line.threads;
    start.onProgress = context.onProgress;
    return start;
}

ResultOptions ResultOptionsOf(const CommandLine& line) {
    ResultOptions options;
    options.format = line.format;
    if (line.lossy >= 0) options.gif.lossy = line.lossy;
    if (line.quality >= 0 || line.nearLossless >= 0) {
        options.webp.kind = line.quality >= 0 ? WebpKind::Lossy : WebpKind::NearLossless;
        options.webp.quality = line.quality >= 0 ? line.quality : line.nearLossless;
    }
    options.fingerprint = line.json;
    if (line.effort >= 0) options.webp.effort = options.png.effort = line.effort;
    options.recipe = DraftRecipe(line);
    options.gif.jobs = options.png.jobs = options.webp.jobs = JobsOnThreads(line.threads);
    return options;
}

// Without an effect the engine is needed only where colours have to become palettes.
bool BuildResult(const CommandLine& given, const CommandContext& context, WholeRun* whole,
                 HostSession* session, PipelineNotes* notes, Failure* failure) {
    if (!given.effects.empty()) return BuildByEngine(given, context, whole, session, notes, failure);
    CommandLine line = given;
    ResultEdits edits = std::exchange(line.resultEdits, {});
    if (whole && whole->use == WholeUse::Hold) edits.every = 1;
    if (!EditResult(edits, session->source)) {
        *failure = {kExitEngine, "there is not enough memory to shrink the frames."};
        return false;
    }
    SettleHalfTransparency(PipelineOptionsOf(line), session->source, notes);
    if (BuildGifAtOnce(line, whole, session)) return true;
    if (line.trueColor || KeepsColors(line, whole, *session->source)) {
        if (whole && whole->use == WholeUse::Find) return true;
        session->record = MakeSourceRecord(*session->source);
        session->built = PlainBuild(session->source, JobsOnThreads(line.threads));
        return true;
    }
    line.effects = {UnchangingEffect()};
    return BuildByEngine(line, context, whole, session, notes, failure);
}

}  // namespace kfx::commands
