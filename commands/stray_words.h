// SPDX-License-Identifier: MIT
// Words that were meant for an option and came to stand among the inputs: names with spaces without quotes,
// effects without --effect, parameters without --set.
#pragma once

#include <string>

#include "commands/command_line.h"

namespace kfx::commands {

// Looks at the inputs of a line that has several. One that names a file, a folder or several files by a
// pattern is never stray. Empty: nothing is; else one sentence that says how the word is to be written.
// `isRefused`: several inputs are wrong here anyway, so that any word that names no file is taken as stray.
std::string StrayWord(const CommandLine& line, bool isRefused);

}  // namespace kfx::commands
