// SPDX-License-Identifier: MIT
// kestrel apply: one animation, edited, through effects or none.
#include "commands/commands.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "commands/apply_report.h"
#include "commands/batch_plan.h"
#include "commands/build_steps.h"
#include "commands/console.h"
#include "commands/done_check.h"
#include "commands/fit.h"
#include "commands/journey_seam.h"
#include "commands/part_run.h"
#include "commands/report.h"
#include "commands/text.h"

namespace kfx::commands {
namespace {

ResultCounts CountsOf(const FitTrial& trial) {
    return {trial.frames, trial.colors, trial.width, trial.height};
}

// Which files the command is about, as the user named them.
nlohmann::ordered_json NamesOf(const CommandLine& line) {
    const std::vector<std::string>& given = line.sources[0].given;
    nlohmann::ordered_json names;
    if (given.size() > 1) names["inputs"] = given;
    if (given.size() <= 1) names["input"] = given.empty() ? line.inputs[0] : given[0];
    names["output"] = line.output;
    return names;
}

// The line of the only result, whose output is a folder.
bool NameResult(CommandLine* line, Failure* failure) {
    std::vector<BatchItem> items;
    if (!PlanBatch(*line, &items, failure)) return false;
    *failure =
        items.size() == 1 ? items[0].outputFailure : Failure{kExitBadCommand, "there are several results."};
    if (failure->exitCode == kExitDone) *failure = items[0].inputFailure;
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
    return CheckResult(line, frames, files, report);
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
    if (fits ? !FitToSize(line, context, {PipelineOptionsOf, ResultOptionsOf, StartOf}, &session, &fit,
                          &failure)
             : !BuildResult(line, context, nullptr, &session, &notes, &failure)) {
        report = FailedReport(failure);
        ReportFit(line, fit, &report);
        return report;
    }
    if (fits) notes = fit.tried[fit.chosen].notes;
    const int64_t effectTime = session.effectMicroseconds;
    const int64_t buildTime = std::max<int64_t>(MicrosecondsSince(buildStart) - effectTime, 0);
    NoteBuild(line, ShownInput(line.inputs[0]), session, notes, &report);
    NoteLoop(line, repeats, &report);
    const bool seamless = line.journeys.seamless && NoteSeam(line, session, &report);
    const ResultCounts counts = fits ? CountsOf(fit.tried[fit.chosen]) : CountsOf(session);
    WrittenResult written;
    std::string error;
    ShowStage("Writing", context, &session);
    const Clock::time_point encodeStart = Clock::now();
    if (fits ? !WriteFound(line, fit, &written, &error)
             : !WriteResult(line.output, std::move(session.built), session.record, ResultOptionsOf(line),
                            &written, &error)) {
        return FailedReport(kExitBadOutput, error);
    }
    if (!written.note.empty()) report.notes.push_back(ShownPath(line.output) + ": " + written.note + ".");
    const ResultTimes times = {.decode = decodeTime,
                               .effect = effectTime,
                               .build = buildTime,
                               .encode = MicrosecondsSince(encodeStart)};
    ReportResult(written, counts, times, start, &report);
    if (line.journeys.seamless) report.result["seamless"] = seamless;
    if (!written.fingerprint.empty()) report.result["fingerprint"] = written.fingerprint;
    ReportFit(line, fit, &report);
    return report;
}

}  // namespace

Report RunApply(const CommandLine& given, const CommandContext& context) {
    CommandLine line = given;
    Failure failure;
    const bool isPart = !line.split.survey.empty();
    const bool isNamed = isPart || !NamesFolder(line.output) || NameResult(&line, &failure);
    const bool isShown = IsStream(line.output) && OutputIsTerminal();
    if (isShown)
        failure = {kExitBadOutput,
                   "standard output is a terminal, which cannot show a picture; send it to a file or a "
                   "program, or name a file with -o."};
    Report report = !isNamed || isShown ? FailedReport(failure)
                    : isPart            ? RunPart(line, context)
                                        : Apply(line, context);
    nlohmann::ordered_json result = NamesOf(line);
    result.update(report.result);
    report.result = std::move(result);
    return report;
}

}  // namespace kfx::commands
