// SPDX-License-Identifier: MIT
// What is said about results of apply and join.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "commands/commands.h"
#include "commands/pipeline.h"
#include "commands/result_files.h"

namespace kfx::commands {

using Clock = std::chrono::steady_clock;

int64_t MicrosecondsSince(Clock::time_point start);

// "1 frame", "2 frames".
std::string Plural(size_t count, const std::string& noun);

// "0.25".
std::string SecondsText(double seconds);

// A sequence by its first and last file.
std::string FilesText(const std::vector<std::string>& files);

struct ResultCounts {
    size_t frames = 0, colors = 0;
    int width = 0, height = 0;
};

ResultCounts CountsOf(const HostSession& session);

// In microseconds.
struct ResultTimes {
    int64_t decode = 0, effect = 0, build = 0, encode = 0;
};

// The report's text and object for a result that was begun at `start`.
void ReportResult(const WrittenResult& written, const ResultCounts& counts, const ResultTimes& times,
                  Clock::time_point start, Report* report);

// Notes about pixels that the result does not show as its source, `shownSource`, had them.
void NoteBuild(const CommandLine& line, const std::string& shownSource, const HostSession& session,
               const PipelineNotes& notes, Report* report);

// The report of a command that has nothing to do.
Report SkippedReport(const std::vector<std::string>& files);

// Shows what is done before and after the engine's own stages.
void ShowStage(const char* stage, const CommandContext& context, HostSession* session);

// Whether the files of a result that the line names can be made of so many frames. False: the report says why
// not.
bool CheckResult(const CommandLine& line, size_t frames, const std::vector<std::string>& files,
                 Report* report);

}  // namespace kfx::commands
