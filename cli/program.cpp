// SPDX-License-Identifier: MIT
#include "cli/program.h"

#include <algorithm>

#include "commands/console.h"
#include "commands/output_format.h"

namespace kfx::cli {

using namespace commands;
namespace {

// Whether a wrong command line asks for the result on standard output, where then nothing else may stand.
bool NamesStandardOutput(const std::vector<std::string>& arguments) {
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::string& word = arguments[i];
        if (word == "-o-" || word == "--output=-") return true;
        if ((word == "-o" || word == "--output") && i + 1 < arguments.size() && IsStream(arguments[i + 1]))
            return true;
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
            PrintReport(FailedReport(kExitBadCommand, text), json, false, NamesStandardOutput(arguments));
            *exitCode = kExitBadCommand;
            return false;
        }
        case ParseOutcome::Run:
            break;
    }
    return true;
}

CommandContext ContextFor(const CommandLine& line, const Engine& engine) {
    return {engine, line.quiet || line.json ? nullptr : ShowProgressLine};
}

int PrintResult(const Report& report, const CommandLine& line) {
    if (PrintReport(report, line.json, line.quiet, IsStream(line.output)) || report.exitCode != kExitDone)
        return report.exitCode;
    return kExitBadOutput;
}

}  // namespace kfx::cli
