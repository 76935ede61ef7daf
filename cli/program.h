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

// What a command runs with on this engine. Progress is shown unless the line asks for quiet or JSON.
commands::CommandContext ContextFor(const commands::CommandLine& line, const commands::Engine& engine);

// Prints a command's report as the line asks for it; the exit code.
int PrintResult(const commands::Report& report, const commands::CommandLine& line);

}  // namespace kfx::cli
