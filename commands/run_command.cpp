// SPDX-License-Identifier: MIT
// What the commands share.
#include <new>

#include "commands/command_row.h"
#include "commands/report.h"
#include "commands/result_files.h"
#include "commands/sequence.h"
#include "commands/source_files.h"
#include "media/file_io.h"

namespace kfx::commands {
Report RunCommand(const CommandLine& line, const CommandContext& context) {
    try {
        CommandLine found = line;
        Failure failure;
        if (!TakeSurvey(&found, &failure) || !TakeRecipe(context.engine, &found, &failure) ||
            !FindSources(line.command->inputs, &found, &failure))
            return FailedReport(failure);
        Report report = line.command->run(found, context);
        const std::vector<std::string>& notes = found.recipe.notes;
        report.notes.insert(report.notes.begin(), notes.begin(), notes.end());
        return report;
    } catch (const std::bad_alloc&) {
        return FailedReport(kExitEngine, "there is not enough memory for this command.");
    }
}

Report RunPrinted(const CommandLine& line, const CommandContext&) {
    Report report;
    report.text = line.printed;
    return report;
}

EngineStart PlainStart(const CommandContext& context, HostSession* session) {
    EngineStart start;
    start.session = session;
    start.onProgress = context.onProgress;
    return start;
}

bool CheckThreads(const CommandLine& line, const Engine& engine, Failure* failure) {
    if (line.threads <= 1 || engine.usesThreads) return true;
    *failure = {kExitBadCommand,
                "the plug-in builds one frame after another; leave out --threads or --through-plugin."};
    return false;
}

ReadLimits LimitsOf(const CommandLine& line) {
    constexpr uint64_t kMillion = 1000000;
    ReadLimits limits;
    if (line.maxPixels >= 0) limits.maxPixels = kMillion * static_cast<uint64_t>(line.maxPixels);
    limits.raisedBy = kMaxPixelsOption;
    limits.raisedUpTo = kMostMaxPixels;
    return limits;
}

bool ReadSource(const CommandLine& line, size_t source, Animation* animation, Report* report) {
    return ReadSequence(line.sources[source], LimitsOf(line), line.delay, animation, report);
}

bool CheckOutput(const CommandLine& line, const std::vector<std::string>& files, Report* report) {
    std::string error;
    if (IsWritingTaken() || MayWriteResult(files, line.inputs, line.force, &error)) return true;
    *report = FailedReport(kExitBadOutput, error);
    return false;
}

}  // namespace kfx::commands
