// SPDX-License-Identifier: MIT
// What the options of an apply command say together.
#pragma once

#include <string>

#include "commands/command_row.h"

namespace kfx::commands {

// Refuses options that contradict each other, or that go with another output or only with an effect, and
// completes the line's format, palette and trueColor. False: `*error` is one sentence.
bool CheckApply(const ApplyWords& words, CommandLine* line, std::string* error);

}  // namespace kfx::commands
