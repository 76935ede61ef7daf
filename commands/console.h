// SPDX-License-Identifier: MIT
// The streams that a program was started with. A stream that takes nothing more, a closed pipe say, is given
// up without a word: nobody reads it.
#pragma once

#include <string>

#include "commands/host_session.h"
#include "commands/report.h"

namespace kfx::commands {

void WriteStandardOutput(const std::string& text);
void WriteStandardError(const std::string& text);

// Whether standard error is a terminal, where somebody watches.
bool ErrorsAreWatched();

// Leaves a line that a process on the same terminal has begun and not ended.
void LeaveUnfinishedLine();

// Prints the report in place of the progress line.
void PrintReport(const Report& report, bool json, bool quiet);

// One line on standard error that shows the engine's stage and frame; nothing unless that is a terminal.
void ShowProgressLine(const HostSession& session);
void ClearProgressLine();

}  // namespace kfx::commands
