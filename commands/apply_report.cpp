// SPDX-License-Identifier: MIT
#include "commands/apply_report.h"

#include <cstdio>

#include "commands/output_format.h"
#include "commands/recipe_text.h"
#include "commands/report.h"

namespace kfx::commands {
namespace {

// In whole microseconds.
double Milliseconds(int64_t microseconds) { return static_cast<double>(microseconds) / 1000; }

}  // namespace

int64_t MicrosecondsSince(Clock::time_point start) {
    return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start).count();
}

std::string Plural(size_t count, const std::string& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string SecondsText(double seconds) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f", seconds);
    return text;
}

std::string FilesText(const std::vector<std::string>& files) {
    return files.size() == 1 ? ShownPath(files.front()) : files.front() + " to " + files.back();
}

ResultCounts CountsOf(const HostSession& session) {
    const BuiltAnimation& built = session.built;
    const size_t colors = CountColors(built, session.record);
    if (built.gif) return {built.gif->frames.size(), colors, built.gif->width, built.gif->height};
    if (built.frames.empty()) return {};
    return {built.frames.size(), colors, built.width, built.height};
}

void ReportResult(const WrittenResult& written, const ResultCounts& counts, const ResultTimes& times,
                  Clock::time_point start, Report* report) {
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    report->text = FilesText(written.files) + ": " + Plural(counts.frames, "frame") + ", " +
                   std::to_string(counts.width) + " x " + std::to_string(counts.height) + ", " +
                   Plural(counts.colors, "color") + ", " +
                   (written.bytes > 0 ? std::to_string(written.bytes) + " bytes, " : "") +
                   SecondsText(seconds) + " s.\n";
    report->result = {{"files", written.files},
                      {"frames", counts.frames},
                      {"width", counts.width},
                      {"height", counts.height},
                      {"colors", counts.colors},
                      {"bytes", written.bytes},
                      {"milliseconds",
                       {{"decode", Milliseconds(times.decode)},
                        {"effect", Milliseconds(times.effect)},
                        {"build", Milliseconds(times.build)},
                        {"encode", Milliseconds(times.encode)}}},
                      {"seconds", seconds}};
}

void NoteBuild(const CommandLine& line, const std::string& shownSource, const HostSession& session,
               const PipelineNotes& notes, Report* report) {
    if (notes.thresholdApplied) {
        report->notes.push_back(ShownPath(line.output) +
                                ": a GIF holds no half-transparent pixels; from half on they are opaque, the "
                                "others are hidden (--matte mixes them onto a colour).");
    }
    if (LosesRecipe(line)) {
        report->notes.push_back(ShownPath(line.output) +
                                ": keeps no recipe, because the options are too long for one or have a line "
                                "end in a value; kestrel verify cannot check it.");
    }
    if (line.supercompress && session.record.transparent) {
        report->notes.push_back(shownSource +
                                ": has transparent pixels; supercompression needs an opaque source.");
    }
}

Report SkippedReport(const std::vector<std::string>& files) {
    Report report;
    report.text = FilesText(files) + ": is there already.\n";
    report.result = {{"files", files}, {"skipped", true}};
    return report;
}

void ShowStage(const char* stage, const CommandContext& context, HostSession* session) {
    session->status = stage;
    session->progressTotal = 0;
    if (context.onProgress) context.onProgress(*session);
}

bool CheckResult(const CommandLine& line, size_t frames, const std::vector<std::string>& files,
                 Report* report) {
    if (!CheckOutput(line, files, report)) return false;
    if (!IsStream(line.output) || line.format != "png" || frames == 1) return true;
    *report = FailedReport(kExitBadCommand, "standard output takes one PNG picture, and there are " +
                                                Plural(frames, "frame") +
                                                "; choose one with --frames, or write --format apng.");
    return false;
}

}  // namespace kfx::commands
