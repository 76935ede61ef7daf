// SPDX-License-Identifier: MIT
#include "commands/console.h"

#include <chrono>

namespace kfx::commands {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kProgressStep{100};

// What the progress line shows, so that it is neither drawn too often nor left behind.
std::string progressLine;
Clock::time_point progressTime;

std::string LineOf(const HostSession& session) {
    std::string line;
    {
        const std::lock_guard<std::mutex> lock(session.statusLock);
        line = session.status;
    }
    const int total = session.progressTotal;
    if (total > 0)
        line += "  " + std::to_string(session.progressCurrent + 1) + " of " + std::to_string(total);
    return line;
}

}  // namespace

bool PrintReport(const Report& report, bool json, bool quiet, bool holdsResult) {
    ClearProgressLine();
    const PrintedReport printed = FormatReport(report, json, quiet);
    if (holdsResult) {
        WriteStandardError(printed.output + printed.errors);
        return true;
    }
    const bool written = WriteStandardOutput(printed.output);
    WriteStandardError(printed.errors);
    if (!written) WriteStandardError("The standard output cannot be written; is its disk full?\n");
    return written;
}

void ShowProgressLine(const HostSession& session) {
    const Clock::time_point now = Clock::now();
    if (now - progressTime < kProgressStep || !ErrorsAreWatched()) return;
    progressTime = now;
    const std::string line = LineOf(session);
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
