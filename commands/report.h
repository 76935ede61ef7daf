// SPDX-License-Identifier: MIT
// What a command has to say, and how it is said: to people in sentences, to scripts as one JSON object on a
// line.
#pragma once

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "commands/exit_codes.h"

// What the compiler makes of this template is in report.cpp alone: it took every other file two seconds.
extern template class nlohmann::basic_json<nlohmann::ordered_map>;

namespace kfx::commands {

struct Report {
    ExitCode exitCode = kExitDone;
    std::string error;               // one sentence; empty when all went well
    std::vector<std::string> notes;  // sentences that change nothing
    std::string text;                // the result for people, whole lines
    nlohmann::ordered_json result = nlohmann::ordered_json::object();
    // Of a command that goes through several files: one for each, printed one after another in place of all
    // of the above but the exit code.
    std::vector<Report> parts;
};

Report FailedReport(ExitCode exitCode, const std::string& error);
Report FailedReport(const Failure& failure);

// A report as it is printed, whole lines.
struct PrintedReport {
    std::string output;  // for standard output
    std::string errors;  // for standard error
};

// The result as output, error and notes as errors (`quiet`: no notes); with `json` everything as one object
// on one line of the output, or for a report of parts each as one.
PrintedReport FormatReport(const Report& report, bool json, bool quiet);

}  // namespace kfx::commands
