// SPDX-License-Identifier: MIT
// Commands that fail for reasons that only files or an engine show, with the whole sentence that each is
// answered with. (tests/commands/command_line_test.cpp has those that the command line alone shows.)
#pragma once

#include <string>
#include <vector>

#include "tests/cli/program.h"

namespace kfx::test {

struct WrongCommand {
    std::vector<std::string> arguments;
    int exitCode;
    std::string sentence;  // without the program's name in front
};

// The folder must hold in.gif and no other file; more is made there.
std::vector<WrongCommand> WrongCommands(const std::string& folder);

// Runs each with these words behind it. Expects its sentence and exit code, alike in text and in JSON, and no
// change in the folder.
void ExpectSentences(const std::vector<WrongCommand>& commands, const std::string& folder,
                     const std::vector<std::string>& more);

}  // namespace kfx::test
