// SPDX-License-Identifier: MIT
// The program `kestrel`, but for what differs between systems.
#pragma once

#include <string>
#include <vector>

#include "commands/command_line.h"
#include "commands/commands.h"

namespace kfx::cli {

// Reads the arguments (UTF-8, without the program's name). False: the program is done, with `*exitCode`; what
// there was to say has been printed.
bool ReadCommandLine(const std::vector<std::string>& arguments, const commands::OwnOptions& own,
                     commands::CommandLine* line, int* exitCode);

// What a command runs with on this engine. Progress is shown unless the line asks for quiet.
commands::CommandContext ContextFor(const commands::CommandLine& line, const commands::Engine& engine);

// The same in a child, whose parent shows the progress.
commands::CommandContext ContextOfChild(const commands::Engine& engine);

// Runs an apply command with several results, or with --dry-run, with a process for each file, and prints
// what they report. `names` as RunBatch() has it. False: the line is no such command, nothing was done.
bool RunBatchLine(commands::CommandLine* line, const commands::Engine* names, int* exitCode);

// Prints a command's report as the line asks for it; the exit code.
int PrintResult(const commands::Report& report, const commands::CommandLine& line);

}  // namespace kfx::cli
