// SPDX-License-Identifier: MIT
// kestrel apply: one animation, edited, through effects or none.
#include "commands/commands.h"

#include <chrono>
#include <cstdio>
#include <utility>

#include "commands/alpha_pixels.h"
#include "commands/journey_seam.h"
#include "commands/pipeline.h"
#include "commands/plain_build.h"
#include "commands/result_files.h"
#include "commands/text.h"

namespace kfx::commands {
namespace {

using Clock = std::chrono::steady_clock;

PipelineOptions PipelineOptionsOf(const CommandLine& line) {
    PipelineOptions options;
    unsigned color = 0;
    options.extendEdges = line.edges == "extend";
    if (line.format != "gif") return options;
    options.halfTransparency = HalfTransparency::Threshold;
    if (ParseColor(line.matte, &color)) {
        options.halfTransparency = HalfTransparency::Mix;
        options.matte = {static_cast<uint8_t>(color), static_cast<uint8_t>(color >> 8),
                         static_cast<uint8_t>(color >> 16)};
    }
    return options;
}

// Into session->built, by the engine. Everything of the engine is gone when this returns: its memory is
// needed for writing.
bool BuildByEngine(const CommandLine& line, const CommandContext& context, HostSession* session,
                   PipelineNotes* notes, Failure* failure) {
    EngineStart start;
    start.session = session;
    // A GIF's frames stand on palettes; those between two effects, those with alpha, widened ones and those
    // with values of their own do not yet.
    if (line.format == "gif" && line.effects.size() == 1 && !HasJourney(line.effects[0]) &&
        line.edges != "extend" && !HasAlpha(*session->source)) {
        start.capabilities = kHostTakesSupercompressed;
    }
    start.fastRemap = line.fastRemap;
    start.ditherBrightness = line.ditherBrightness;
    start.ditherContrast = line.ditherContrast;
    start.seed = line.recipe.seed;
    start.onProgress = context.onProgress;
    const OpenEngine engine(context.engine, start, failure);
    std::vector<Job> jobs;
    return engine &&
           ResolveJobs(line, HasOwnPalette(*session->source), context.engine, engine.opened, &jobs,
                       failure) &&
           RunJobs(engine, session, std::move(jobs), PipelineOptionsOf(line), notes, failure);
}

// Without an effect the engine is needed only where colours have to become palettes.
bool Build(CommandLine line, const CommandContext& context, HostSession* session, PipelineNotes* notes,
           Failure* failure) {
    if (!line.effects.empty()) return BuildByEngine(line, context, session, notes, failure);
    SettleHalfTransparency(PipelineOptionsOf(line), session->source, notes);
    if (line.trueColor || (line.keepsColors && FitsGifPalettes(*session->source))) {
        session->record = MakeSourceRecord(*session->source);
        session->built = PlainBuild(session->source);
        return true;
    }
    line.effects = {UnchangingEffect()};
    return BuildByEngine(line, context, session, notes, failure);
}

ResultOptions OptionsOf(const CommandLine& line) {
    ResultOptions options;
    options.format = line.format;
    if (line.lossy >= 0) options.gif.lossy = line.lossy;
    if (line.quality >= 0 || line.nearLossless >= 0) {
        options.webp.kind = line.quality >= 0 ? WebpKind::Lossy : WebpKind::NearLossless;
        options.webp.quality = line.quality >= 0 ? line.quality : line.nearLossless;
    }
    if (line.effort >= 0) options.webp.effort = line.effort;
    options.recipe = DraftRecipe(line);
    return options;
}

std::string Plural(size_t count, const std::string& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

// A sequence by its first and last file.
std::string FilesText(const std::vector<std::string>& files) {
    return files.size() == 1 ? ShownPath(files.front()) : files.front() + " to " + files.back();
}

std::string SecondsText(double seconds) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f", seconds);
    return text;
}

}  // namespace

Report RunApply(const CommandLine& line, const CommandContext& context) {
    const Clock::time_point start = Clock::now();
    Report report;
    Animation source;
    HostSession session;
    session.source = &source;
    session.sourcePath = SystemPath(line.inputs[0]);
    Failure failure;
    if (!ReadSource(line, 0, &source, &report)) return report;
    FrameEdits edits = line.edits;
    if (line.delay >= 0) edits.stillDelay = line.delay;
    if (!EditFrames(edits, LimitsOf(line), &source, &failure)) return FailedReport(failure);
    if (!CheckOutput(line, ResultPaths(line.output, source.frames.size(), line.format), &report))
        return report;
    if (IsStream(line.output) && line.format == "png" && source.frames.size() > 1) {
        return FailedReport(kExitBadCommand, "standard output takes one PNG picture, and there are " +
                                                 Plural(source.frames.size(), "frame") +
                                                 "; choose one with --frames, or write --format apng.");
    }
    PipelineNotes notes;
    if (!Build(line, context, &session, &notes, &failure)) return FailedReport(failure);
    if (notes.thresholdApplied) {
        report.notes.push_back(ShownPath(line.output) +
                               ": a GIF holds no half-transparent pixels; from half on they are opaque, the "
                               "others are hidden (--matte mixes them onto a colour).");
    }
    if (line.supercompress && session.record.transparent) {
        report.notes.push_back(ShownInput(line.inputs[0]) +
                               ": has transparent pixels; supercompression needs an opaque source.");
    }
    bool seamless = false;
    if (line.journeys.seamless) {
        std::vector<std::string> clauses;
        const bool loops = line.format != "png" && !IsRawFormat(line.format);
        seamless = CheckSeam(session.built, session.record, loops, &clauses);
        for (const std::string& clause : clauses)
            report.notes.push_back(ShownPath(line.output) + ": " + clause + ".");
    }
    const size_t frames = session.built.frames.size();
    const size_t colors = CountColors(session.built, session.record);
    const int width = session.built.width, height = session.built.height;
    WrittenResult written;
    std::string error;
    if (!WriteResult(line.output, std::move(session.built), session.record, OptionsOf(line), &written,
                     &error)) {
        return FailedReport(kExitBadOutput, error);
    }
    if (!written.note.empty()) report.notes.push_back(ShownPath(line.output) + ": " + written.note + ".");
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    report.text = FilesText(written.files) + ": " + Plural(frames, "frame") + ", " + std::to_string(width) +
                  " x " + std::to_string(height) + ", " + Plural(colors, "color") + ", " +
                  std::to_string(written.bytes) + " bytes, " + SecondsText(seconds) + " s.\n";
    report.result = {{"output", line.output}, {"frames", frames},      {"width", width},
                     {"height", height},      {"colors", colors},      {"bytes", written.bytes},
                     {"seconds", seconds},    {"files", written.files}};
    if (line.journeys.seamless) report.result["seamless"] = seamless;
    return report;
}

}  // namespace kfx::commands
