// SPDX-License-Identifier: MIT
// What help and manual say beside the options.
#pragma once

#include <string>
#include <vector>

#include "commands/exit_codes.h"

namespace CLI {
class App;
}

namespace kfx::commands {

struct ExitCodeRow {
    ExitCode code;
    const char* meaning;
};

// All exit codes, ascending.
const std::vector<ExitCodeRow>& ExitCodeRows();

// They as a part of the help.
std::string ExitCodesText();

// Makes the help of a command begin with the examples, one a line, behind its description: most readers look
// for a line to start from.
void ShowExamplesFirst(CLI::App* command, const std::string& examples);

// Each line with two spaces before it.
std::string Indented(const std::string& lines);

}  // namespace kfx::commands
