// SPDX-License-Identifier: MIT
// kestrel apply: one animation, edited, through effects or none.
#include "commands/commands.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <utility>

#include "commands/alpha_pixels.h"
#include "commands/batch_plan.h"
#include "commands/console.h"
#include "commands/done_check.h"
#include "commands/fit.h"
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

// Into session->built, by the engine. Everything of the engine is gone when this returns: its memory is
// needed for writing.
bool BuildByEngine(const CommandLine& line, const CommandContext& context, HostSession* session,
                   PipelineNotes* notes, Failure* failure) {
    if (line.threads > 1 && !context.engine.usesThreads) {
        *failure = {kExitBadCommand,
                    "the plug-in builds one frame after another; leave out --threads or --through-plugin."};
        return false;
    }
    if (line.colors > 0 && !context.engine.limitsColors) {
        *failure = {kExitBadCommand,
                    "the plug-in's window has no control for --colors; leave it out, or leave out "
                    "--through-plugin."};
        return false;
    }
    const OpenEngine engine(context.engine, StartOf(line, context, session), failure);
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
    if (!EditResult(std::exchange(line.resultEdits, {}), session->source)) {
        *failure = {kExitEngine, "there is not enough memory to shrink the frames."};
        return false;
    }
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
    options.fingerprint = line.json;
    if (line.effort >= 0) options.webp.effort = line.effort;
    options.recipe = DraftRecipe(line);
    return options;
}

struct ResultCounts {
    size_t frames, colors;
    int width, height;
};

ResultCounts CountsOf(const HostSession& session) {
    const BuiltAnimation& built = session.built;
    if (built.frames.empty()) return {};
    return {built.frames.size(), CountColors(built, session.record), built.width, built.height};
}

ResultCounts CountsOf(const FitTrial& trial) {
    return {trial.frames, trial.colors, trial.width, trial.height};
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

int64_t MicrosecondsSince(Clock::time_point start) {
    return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start).count();
}

// In whole microseconds.
double Milliseconds(int64_t microseconds) { return static_cast<double>(microseconds) / 1000; }

// Which files the command is about, as the user named them.
nlohmann::ordered_json NamesOf(const CommandLine& line) {
    const std::vector<std::string>& given = line.sources[0].given;
    nlohmann::ordered_json names;
    if (given.size() > 1) names["inputs"] = given;
    if (given.size() <= 1) names["input"] = given.empty() ? line.inputs[0] : given[0];
    names["output"] = line.output;
    return names;
}

Report SkippedReport(const std::vector<std::string>& files) {
    Report report;
    report.text = FilesText(files) + ": is there already.\n";
    report.result = {{"files", files}, {"skipped", true}};
    return report;
}

// Shows what is done before and after the engine's own stages.
void ShowStage(const char* stage, const CommandContext& context, HostSession* session) {
    session->status = stage;
    session->progressTotal = 0;
    if (context.onProgress) context.onProgress(*session);
}

// The line of the only result, whose output is a folder.
bool NameResult(CommandLine* line, Failure* failure) {
    std::vector<BatchItem> items;
    if (!PlanBatch(*line, &items, failure)) return false;
    *failure =
        items.size() == 1 ? items[0].outputFailure : Failure{kExitBadCommand, "there are several results."};
    CommandLine one;
    if (failure->exitCode != kExitDone || !LineOf(*line, items[0], &one, &failure->error)) return false;
    *line = std::move(one);
    return MakeFolders(items, failure);
}

// Whether the result is to be made. False: the report says why not, or that it is there.
bool MayBegin(const CommandLine& line, const Animation& source, Report* report) {
    const size_t frames = KeptFrames(line.resultEdits, source.frames.size());
    const std::vector<std::string> files = ResultPaths(line.output, frames, line.format);
    std::string reason;
    if (line.batch.skipDone && IsDone(line, source, files, &reason)) {
        *report = SkippedReport(files);
        return false;
    }
    if (!reason.empty() && !line.force) {
        *report = FailedReport(kExitBadOutput, line.output + ": is there, but " + reason +
                                                   "; --force together with --skip-done makes it anew.");
        return false;
    }
    if (!CheckOutput(line, files, report)) return false;
    if (!IsStream(line.output) || line.format != "png" || frames == 1) return true;
    *report = FailedReport(kExitBadCommand, "standard output takes one PNG picture, and there are " +
                                                Plural(frames, "frame") +
                                                "; choose one with --frames, or write --format apng.");
    return false;
}

void NoteBuild(const CommandLine& line, const HostSession& session, const PipelineNotes& notes,
               Report* report) {
    if (notes.thresholdApplied) {
        report->notes.push_back(ShownPath(line.output) +
                                ": a GIF holds no half-transparent pixels; from half on they are opaque, the "
                                "others are hidden (--matte mixes them onto a colour).");
    }
    if (line.supercompress && session.record.transparent) {
        report->notes.push_back(ShownInput(line.inputs[0]) +
                                ": has transparent pixels; supercompression needs an opaque source.");
    }
}

// A source, or --loop, may say more than the format can.
void NoteLoop(const CommandLine& line, int repeats, Report* report) {
    constexpr int kMostOfWebp = 65534, kMostOfGif = 65535;  // the first counts all showings, up to 65535
    if (line.format != "webp" && line.format != "gif") return;
    const int most = line.format == "webp" ? kMostOfWebp : kMostOfGif;
    if (repeats <= most) return;
    report->notes.push_back(ShownPath(line.output) + ": is played " + std::to_string(int64_t{most} + 1) +
                            " times, the most that the file can say, not " +
                            std::to_string(int64_t{repeats} + 1) + ".");
}

// Whether the last frame leads into the first; notes why not.
bool NoteSeam(const CommandLine& line, const HostSession& session, Report* report) {
    std::vector<std::string> clauses;
    const bool loops = line.format != "png" && !IsRawFormat(line.format);
    const bool seamless = CheckSeam(session.built, session.record, loops, &clauses);
    for (const std::string& clause : clauses)
        report->notes.push_back(ShownPath(line.output) + ": " + clause + ".");
    return seamless;
}

Report Apply(const CommandLine& line, const CommandContext& context) {
    const Clock::time_point start = Clock::now();
    Report report;
    Animation source;
    HostSession session;
    session.source = &source;
    session.sourcePath = SystemPath(line.inputs[0]);
    Failure failure;
    ShowStage("Reading", context, &session);
    if (!ReadSource(line, 0, &source, &report)) return report;
    const int64_t decodeTime = MicrosecondsSince(start);
    FrameEdits edits = line.edits;
    if (line.delay >= 0) edits.stillDelay = line.delay;
    if (!EditFrames(edits, LimitsOf(line), &source, &failure)) return FailedReport(failure);
    if (!MayBegin(line, source, &report)) return report;
    const int repeats = source.loopCount;
    PipelineNotes notes;
    FitFound fit;
    const bool fits = line.fit.mostBytes > 0;
    const Clock::time_point buildStart = Clock::now();
    if (fits ? !FitToSize(line, context, {PipelineOptionsOf, OptionsOf, StartOf}, &session, &fit, &failure)
             : !Build(line, context, &session, &notes, &failure)) {
        report = FailedReport(failure);
        ReportFit(line, fit, &report);
        return report;
    }
    if (fits) notes = fit.tried[fit.chosen].notes;
    const int64_t effectTime = session.effectMicroseconds;
    const int64_t buildTime = std::max<int64_t>(MicrosecondsSince(buildStart) - effectTime, 0);
    NoteBuild(line, session, notes, &report);
    NoteLoop(line, repeats, &report);
    const bool seamless = line.journeys.seamless && NoteSeam(line, session, &report);
    const ResultCounts counts = fits ? CountsOf(fit.tried[fit.chosen]) : CountsOf(session);
    WrittenResult written;
    std::string error;
    ShowStage("Writing", context, &session);
    const Clock::time_point encodeStart = Clock::now();
    if (fits ? !WriteFound(line, fit, &written, &error)
             : !WriteResult(line.output, std::move(session.built), session.record, OptionsOf(line), &written,
                            &error)) {
        return FailedReport(kExitBadOutput, error);
    }
    if (!written.note.empty()) report.notes.push_back(ShownPath(line.output) + ": " + written.note + ".");
    const int64_t encodeTime = MicrosecondsSince(encodeStart);
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    report.text = FilesText(written.files) + ": " + Plural(counts.frames, "frame") + ", " +
                  std::to_string(counts.width) + " x " + std::to_string(counts.height) + ", " +
                  Plural(counts.colors, "color") + ", " + std::to_string(written.bytes) + " bytes, " +
                  SecondsText(seconds) + " s.\n";
    report.result = {{"files", written.files},
                     {"frames", counts.frames},
                     {"width", counts.width},
                     {"height", counts.height},
                     {"colors", counts.colors},
                     {"bytes", written.bytes},
                     {"milliseconds",
                      {{"decode", Milliseconds(decodeTime)},
                       {"effect", Milliseconds(effectTime)},
                       {"build", Milliseconds(buildTime)},
                       {"encode", Milliseconds(encodeTime)}}},
                     {"seconds", seconds}};
    if (line.journeys.seamless) report.result["seamless"] = seamless;
    if (!written.fingerprint.empty()) report.result["fingerprint"] = written.fingerprint;
    ReportFit(line, fit, &report);
    return report;
}

}  // namespace

Report RunApply(const CommandLine& given, const CommandContext& context) {
    CommandLine line = given;
    Failure failure;
    const bool isNamed = !NamesFolder(line.output) || NameResult(&line, &failure);
    const bool isShown = IsStream(line.output) && OutputIsTerminal();
    if (isShown)
        failure = {kExitBadOutput,
                   "standard output is a terminal, which cannot show a picture; send it to a file or a "
                   "program, or name a file with -o."};
    Report report = isNamed && !isShown ? Apply(line, context) : FailedReport(failure);
    nlohmann::ordered_json result = NamesOf(line);
    result.update(report.result);
    report.result = std::move(result);
    return report;
}

}  // namespace kfx::commands
