// SPDX-License-Identifier: MIT
// Options that several commands have.
#pragma once

#include <string>
#include <vector>

#include "commands/command_row.h"

namespace CLI {
class Option;
}

namespace kfx::commands {

// Adds --json, --quiet and the program's own options: what the commands that use an engine have in common.
void AddEngineOptions(CLI::App* command, const OptionTarget& target);

// Adds --json and --quiet to a command that shows no progress.
void AddReportOptions(CLI::App* command, CommandLine* line);

// Adds the option `name` for the output, which must be given, and --force.
void AddOutput(CLI::App* command, CommandLine* line, const char* name, const char* description);

// The same for an output that need not be given.
CLI::Option* AddOptionalOutput(CLI::App* command, CommandLine* line, const char* name,
                               const char* description);

// Adds one input without an option's name.
CLI::Option* AddInput(CLI::App* command, CommandLine* line, const char* name, const char* description);

// Adds any number of inputs.
CLI::Option* AddInputs(CLI::App* command, CommandLine* line, const char* name,
                       const std::string& description);

// Adds --join and --delay.
void AddJoinOptions(CLI::App* command, CommandLine* line);

// Adds --max-pixels.
void AddReadLimit(CLI::App* command, CommandLine* line);

// Adds --threads. `sharedByFiles`: several files are worked on at a time.
void AddThreads(CLI::App* command, CommandLine* line, bool sharedByFiles);

// Whether the output's name ends in one of these, such as {".gif", ".png"}. False: `*error` is one sentence.
bool CheckEnding(const CommandLine& line, const std::vector<std::string>& endings, std::string* error);

}  // namespace kfx::commands
