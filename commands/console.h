// SPDX-License-Identifier: MIT
// The streams that a program was started with.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "commands/host_session.h"
#include "commands/progress.h"

namespace kfx::commands {

struct PrintedReport;
struct Report;

// False: the text is lost, on a full disk for example. A pipe whose reader has gone counts as written.
bool WriteStandardOutput(const std::string& text);
// Writes bytes as they are. False: `*reason` is a clause; a reader that has gone is one, because a result is
// lost then.
bool WriteStandardOutput(const uint8_t* data, size_t size, std::string* reason);
void WriteStandardError(const std::string& text);

// Whether standard error is a terminal that can draw over a line, where somebody watches.
bool ErrorsAreWatched();

// Whether standard output is a terminal, which would show a picture's bytes as text.
bool OutputIsTerminal();

// How many columns the terminal of standard error has.
size_t TerminalColumns();

// All bytes up to the end of standard input. False: `*reason` is a clause.
bool ReadStandardInput(std::vector<uint8_t>* content, std::string* reason);

// The report as it is printed, with FormatReport; all of it on standard error when standard output
// `holdsResult`.
PrintedReport WordsOf(const Report& report, bool json, bool quiet, bool holdsResult);

// Prints the report, so worded, in place of the progress line. False: standard output did not take it, which
// a sentence on standard error then says.
bool PrintReport(const Report& report, bool json, bool quiet, bool holdsResult = false);

// One line on standard error that shows the engine's stage and frame, and how long the stage will take;
// nothing unless that is a terminal. The other two show the same of a child, and any text.
void ShowProgressLine(const HostSession& session);
void ShowStageLine(const StageProgress& progress);
void ShowProgressText(const std::string& text);
void ClearProgressLine();

}  // namespace kfx::commands
