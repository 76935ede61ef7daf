// SPDX-License-Identifier: MIT
// What the options of an apply command say together.
#pragma once

#include <string>

#include "commands/command_line.h"

namespace kfx::commands {

// What CommandLine holds in another form, or not at all.
struct ApplyWords {
    std::string format;      // of --format; empty: not given
    bool noComment = false;  // --no-comment
};

// Refuses options that contradict each other, or that go with another output or only with an effect, and
// completes the line's format, palette and trueColor. False: `*error` is one sentence.
bool CheckApply(const ApplyWords& words, CommandLine* line, std::string* error);

}  // namespace kfx::commands
