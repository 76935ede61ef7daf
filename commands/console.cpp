// SPDX-License-Identifier: MIT
#include "commands/console.h"

#include <chrono>

#include "commands/report.h"

namespace kfx::commands {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kProgressStep{100};

// What the progress line shows, so that it is neither drawn too often nor left behind.
std::string progressLine;
Clock::time_point progressTime;

// Since when the stage that is shown goes on.
std::string stageName;
Clock::time_point stageStart;

}  // namespace

PrintedReport WordsOf(const Report& report, bool json, bool quiet, bool holdsResult) {
    PrintedReport printed = FormatReport(report, json, quiet);
    if (holdsResult) printed = {"", printed.output + printed.errors};
    return printed;
}

bool PrintReport(const Report& report, bool json, bool quiet, bool holdsResult) {
    ClearProgressLine();
    const PrintedReport printed = WordsOf(report, json, quiet, holdsResult);
    const bool written = WriteStandardOutput(printed.output);
    WriteStandardError(printed.errors);
    if (!written) WriteStandardError("The standard output cannot be written; is its disk full?\n");
    return written;
}

void ShowProgressLine(const HostSession& session) { ShowStageLine(ProgressOf(session)); }

void ShowStageLine(const StageProgress& progress) {
    const Clock::time_point now = Clock::now();
    if (progress.stage != stageName) stageStart = now;
    stageName = progress.stage;
    std::string left;
    if (progress.total > 0 && progress.current > 0) {
        left = TimeLeftText(std::chrono::duration<double>(now - stageStart).count(),
                            static_cast<uint64_t>(progress.current), static_cast<uint64_t>(progress.total));
    }
    ShowProgressText(TextOf(progress) + (left.empty() ? "" : ", " + left));
}

void ShowProgressText(const std::string& text) {
    const Clock::time_point now = Clock::now();
    if (now - progressTime < kProgressStep || !ErrorsAreWatched()) return;
    progressTime = now;
    // The last column stays free: some terminals begin a new line behind it.
    const std::string line = FitColumns(text, TerminalColumns() - 1);
    if (line == progressLine) return;
    const std::string rest(progressLine.size() > line.size() ? progressLine.size() - line.size() : 0, ' ');
    WriteStandardError("\r" + line + rest);
    progressLine = line;
}

void ClearProgressLine() {
    if (progressLine.empty()) return;
    WriteStandardError("\r" + std::string(progressLine.size(), ' ') + "\r");
    progressLine.clear();
}

}  // namespace kfx::commands
