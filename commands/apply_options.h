// SPDX-License-Identifier: MIT
// The options of kestrel apply, which kestrel survey has, too.
#pragma once

#include <string>

#include "commands/command_row.h"

namespace kfx::commands {

enum class ApplyUse { Apply, Survey };

// Adds inputs, output and options to the command. A survey has none for several results, for sizes and for
// parts.
void AddApplyOptions(CLI::App* command, const OptionTarget& target, ApplyUse use);

// Fills line->effects: each setting belongs to the latest effect before it, or to the only one. False:
// `*error` is one sentence.
bool JoinEffectsAndSettings(const CLI::App& command, const ApplyWords& words, CommandLine* line,
                            std::string* error);

}  // namespace kfx::commands
