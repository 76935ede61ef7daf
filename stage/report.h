// SPDX-License-Identifier: MIT
// What a command has to say, and how it is said: to people in sentences, to scripts as one JSON object.
#pragma once

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "stage/exit_codes.h"
#include "stage/host_services.h"

namespace kfx::stage {

struct Report {
    ExitCode exitCode = kExitDone;
    std::string error;               // one sentence; empty when all went well
    std::vector<std::string> notes;  // sentences that change nothing
    std::string text;                // the result for people, whole lines
    nlohmann::ordered_json result = nlohmann::ordered_json::object();
};

Report FailedReport(ExitCode exitCode, const std::string& error);

// Prints the report: the result on standard output, errors and notes on standard error; with `json`
// everything as one object on standard output.
void PrintReport(const Report& report, bool json, bool quiet);

// One line on standard error that shows the plug-in's stage and frame; nothing unless that is a terminal.
void ShowProgressLine(const HostSession& session);
void ClearProgressLine();

// Leaves a line that a process on the same terminal has begun and not ended.
void LeaveUnfinishedLine();

void WriteStandardOutput(const std::string& text);

}  // namespace kfx::stage
