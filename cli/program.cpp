// SPDX-License-Identifier: MIT
#include "cli/program.h"

#include <algorithm>

#include "commands/batch_run.h"
#include "commands/child_process.h"
#include "commands/console.h"
#include "commands/idle_options.h"
#include "commands/output_format.h"

namespace kfx::cli {

using namespace commands;
namespace {

// Whether a wrong command line asks for the result on standard output, where then nothing else may stand.
bool ResultGoesToStandardOutput(const std::vector<std::string>& arguments) {
    constexpr char kLong[] = "--output";
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::string& word = arguments[i];
        std::string output;
        if (word == "-o" || word == kLong) {
            if (i + 1 < arguments.size()) output = arguments[i + 1];
        } else if (word.rfind("-o", 0) == 0) {
            output = word.substr(2);
        } else if (word.rfind(std::string(kLong) + "=", 0) == 0) {
            output = word.substr(sizeof kLong);
        }
        if (NamesStandardOutput(output)) return true;
    }
    return false;
}

}  // namespace

bool ReadCommandLine(const std::vector<std::string>& arguments, const OwnOptions& own, CommandLine* line,
                     int* exitCode) {
    std::string text;
    switch (ParseCommandLine(arguments, own, line, &text)) {
        case ParseOutcome::ShowText:
            *exitCode = WriteStandardOutput(text) ? kExitDone : kExitBadOutput;
            return false;
        case ParseOutcome::Error: {
            const bool json = std::find(arguments.begin(), arguments.end(), "--json") != arguments.end();
            PrintReport(FailedReport(kExitBadCommand, text), json, false,
                        ResultGoesToStandardOutput(arguments));
            *exitCode = kExitBadCommand;
            return false;
        }
        case ParseOutcome::Run:
            break;
    }
    Failure failure;
    if (CheckIdleOptions(*line, &failure)) return true;
    *exitCode = PrintResult(FailedReport(failure), *line);
    return false;
}

CommandContext ContextFor(const CommandLine& line, const Engine& engine) {
    return {engine, line.quiet ? nullptr : ShowProgressLine};
}

CommandContext ContextOfChild(const Engine& engine) { return {engine, TellOfProgress}; }

bool RunBatchLine(CommandLine* line, const Engine* names, int* exitCode) {
    std::vector<BatchItem> items;
    Report refusal;
    std::string error;
    if (!IsBatch(line, &items, &refusal)) {
        if (refusal.exitCode == kExitDone) return false;
        *exitCode = PrintResult(refusal, *line);
    } else if (line->batch.dryRun) {
        *exitCode = PrintPlan(*line, items, names);
    } else if (!PrepareChildren(&error)) {
        *exitCode = PrintResult(FailedReport(kExitEngine, error), *line);
    } else {
        *exitCode = RunBatch(*line, items, names);
    }
    return true;
}

int PrintResult(const Report& report, const CommandLine& line) {
    if (PrintReport(report, line.json, line.quiet, IsStream(line.output)) || report.exitCode != kExitDone)
        return report.exitCode;
    return kExitBadOutput;
}

}  // namespace kfx::cli
