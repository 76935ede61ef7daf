// SPDX-License-Identifier: MIT
#include "commands/part_run.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <utility>

#include "commands/apply_report.h"
#include "commands/build_steps.h"
#include "commands/console.h"
#include "commands/fingerprint.h"
#include "commands/frame_edits.h"
#include "commands/part_file.h"
#include "commands/report.h"
#include "commands/survey_text.h"
#include "commands/text.h"
#include "media/file_io.h"
#include "media/utf8_path.h"

namespace kfx::commands {
namespace {

// Frames of the result, both ends among them, and how many are needed before them.
struct PartFrames {
    size_t first = 0;
    size_t last = 0;
    size_t before = 0;
};

bool FindPart(const CommandLine& line, const Survey& survey, PartFrames* part, Failure* failure) {
    const size_t end = survey.frames - 1;
    part->first = static_cast<size_t>(line.split.firstFrame);
    part->last = line.split.lastFrame == kLastFrame ? end : static_cast<size_t>(line.split.lastFrame);
    const size_t highest = std::max(part->first, part->last);
    // A pixel that does not change is found by comparing with the frame before.
    part->before = line.supercompress && part->first > 0 ? 1 : 0;
    if (highest <= end) return true;
    *failure = {kExitBadCommand, "--frames: there is no frame " + std::to_string(highest) +
                                     "; the result of this survey has " + FramesText(0, end) + "."};
    return false;
}

// Whether the part is there. False: `*reason` is a clause; empty when nothing is there.
bool IsPartDone(const CommandLine& line, const PartFrames& frames, std::string* reason) {
    std::error_code unknown;
    if (IsStream(line.output) || !std::filesystem::exists(PathOf(SystemPath(line.output)), unknown))
        return false;
    std::vector<uint8_t> file;
    PartFile part;
    std::string ignored;
    if (!ReadWholeFile(SystemPath(line.output), &file, &ignored) || !DecodePart(file, &part, &ignored)) {
        *reason = "it is damaged";
    } else if (part.survey != line.split.surveyText) {
        *reason = "it is of another survey";
    } else if (part.first != frames.first || part.count != frames.last - frames.first + 1) {
        *reason = "it has other frames";
    }
    return reason->empty();
}

// False: the report says why the part is not made, or that it is there.
bool MayBegin(const CommandLine& line, const PartFrames& frames, Report* report) {
    std::string reason;
    if (line.batch.skipDone && IsPartDone(line, frames, &reason)) {
        *report = SkippedReport({line.output});
        return false;
    }
    if (!reason.empty() && !line.force) {
        *report = FailedReport(kExitBadOutput, line.output + ": is there, but " + reason +
                                                   "; --force together with --skip-done makes it anew.");
        return false;
    }
    CommandLine reading = line;  // the survey is an input, too
    reading.inputs.push_back(line.split.survey);
    return CheckOutput(reading, {line.output}, report);
}

// Leaves the part's frames of the source, edited, and says which these are.
bool TakeFrames(const CommandLine& line, const PartFrames& part, Animation* source, WholeRun* run,
                Failure* failure) {
    const auto every = static_cast<size_t>(line.resultEdits.every);
    FrameEdits edits = line.edits;
    if (line.delay >= 0) edits.stillDelay = line.delay;
    const size_t first = part.first - part.before;
    const NeededFrames needed = {.first = first * every, .end = part.last * every + 1, .step = every};
    if (!EditFrames(edits, LimitsOf(line), source, failure, needed)) return false;
    run->timeline = TimelineOf(source->frames);
    EditResult({.shrink = 100, .every = line.resultEdits.every}, source);
    std::vector<Frame>& frames = source->frames;
    run->hasSeveralFrames = frames.size() > 1;
    run->framesBefore = static_cast<int>(part.before);
    if (part.last >= frames.size()) {
        *failure = {kExitBadInput, ShownInput(line.split.survey) + ": this survey is damaged."};
        return false;
    }
    frames.erase(frames.begin() + static_cast<std::ptrdiff_t>(part.last) + 1, frames.end());
    frames.erase(frames.begin(), frames.begin() + static_cast<std::ptrdiff_t>(first));
    for (size_t number = first; number <= part.last; ++number) run->numbers.push_back(number * every);
    return true;
}

bool Write(const CommandLine& line, const std::vector<uint8_t>& file, std::string* error) {
    if (!IsStream(line.output)) {
        if (WriteWholeFile(SystemPath(line.output), file, error)) return true;
        *error = WithFolderAsGiven(*error, line.output);
        return false;
    }
    if (WriteStandardOutput(file.data(), file.size(), error)) return true;
    *error = "standard output: " + *error + ".";
    return false;
}

Report WritePart(const CommandLine& line, const PartFrames& frames, size_t all, const PipelineNotes& notes,
                 Clock::time_point start, HostSession* session) {
    PartFile part;
    part.survey = line.split.surveyText;
    part.first = frames.first;
    part.count = frames.last - frames.first + 1;
    part.thresholdApplied = notes.thresholdApplied;
    part.built = std::move(session->built);
    part.record = std::move(session->record);
    std::vector<SourceFrame>& kept = part.record.frames;
    if (part.built.frames.size() != part.count || kept.size() != part.count + frames.before)
        return FailedReport(kExitEngine, "the engine has built another number of frames than this part has.");
    kept.erase(kept.begin(), kept.begin() + static_cast<std::ptrdiff_t>(frames.before));
    const std::vector<uint8_t> file = EncodePart(part);
    if (file.size() > kMostFileBytes) {
        return FailedReport(kExitBadInput, line.output +
                                               ": would be larger than 1 GiB, which kestrel join does not "
                                               "read; take fewer frames for a part.");
    }
    std::string error;
    if (!Write(line, file, &error)) return FailedReport(kExitBadOutput, error);
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    Report report;
    report.text = ShownPath(line.output) + ": " + FramesText(frames.first, frames.last) + " of " +
                  std::to_string(all) + ", " + std::to_string(part.built.width) + " x " +
                  std::to_string(part.built.height) + ", " + std::to_string(file.size()) + " bytes, " +
                  SecondsText(seconds) + " s.\n";
    report.result = {{"files", {line.output}},
                     {"frames", part.count},
                     {"first", frames.first},
                     {"last", frames.last},
                     {"of", all},
                     {"width", part.built.width},
                     {"height", part.built.height},
                     {"bytes", file.size()},
                     {"seconds", seconds}};
    return report;
}

}  // namespace

bool CheckPartEngine(const Engine& engine, Failure* failure) {
    if (!engine.buildsParts)
        *failure = {kExitBadCommand, "the plug-in builds whole animations; leave out --through-plugin."};
    return engine.buildsParts;
}

std::string FramesText(size_t first, size_t last) {
    return first == last ? "frame " + std::to_string(first)
                         : "frames " + std::to_string(first) + " to " + std::to_string(last);
}

Report RunPart(const CommandLine& line, const CommandContext& context) {
    const Clock::time_point start = Clock::now();
    Report report;
    Failure failure;
    Survey survey;
    PartFrames frames;
    std::string error;
    Animation source;
    HostSession session;
    session.source = &source;
    session.sourcePath = SystemPath(line.inputs[0]);
    if (!ReadSurvey(line.split.surveyText, &survey, &error)) return FailedReport(kExitBadInput, error);
    if (!CheckPartEngine(context.engine, &failure) || !FindPart(line, survey, &frames, &failure))
        return FailedReport(failure);
    if (!MayBegin(line, frames, &report)) return report;
    ShowStage("Reading", context, &session);
    if (!ReadSource(line, 0, &source, &report)) return report;
    if (ExactHashOf(source) != survey.source) {
        return FailedReport(kExitBadInput, ShownInput(line.inputs[0]) + ": is not what " +
                                               ShownInput(line.split.survey) + " is a survey of.");
    }
    PipelineNotes notes;
    WholeRun run;
    run.use = WholeUse::Hold;
    run.facts = &survey.facts;
    if (!TakeFrames(line, frames, &source, &run, &failure) ||
        !BuildResult(line, context, &run, &session, &notes, &failure))
        return FailedReport(failure);
    ShowStage("Writing", context, &session);
    Report written = WritePart(line, frames, survey.frames, notes, start, &session);
    written.notes.insert(written.notes.begin(), report.notes.begin(), report.notes.end());
    return written;
}

}  // namespace kfx::commands
