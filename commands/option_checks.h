// SPDX-License-Identifier: MIT
// What the options of an apply command say together.
#pragma once

#include <string>

#include "commands/command_row.h"

namespace kfx::commands {

// Refuses options that contradict each other, or that go with another output or only with an effect, and
// completes the line's format, palette and trueColor. False: `*error` is one sentence.
// Where the output is a folder and no format is given, each result has its own: CompleteFormat does the rest
// for it then.
bool CheckApply(const ApplyWords& words, CommandLine* line, std::string* error);

// Refuses options that do not go with line->format and completes palette and trueColor. To be called once.
// False: `*error` is one sentence.
bool CompleteFormat(CommandLine* line, std::string* error);

}  // namespace kfx::commands
