// SPDX-License-Identifier: MIT
// What may stand at a place of an unfinished command line. The scripts that shells load
// (completion_scripts.h) ask for it, so that all shells offer the same, from the options that the parser
// knows.
#pragma once

#include <string>
#include <vector>

#include "commands/parser.h"

namespace kfx::commands {

// The command by which shells ask. Nobody types it, and no help lists it.
inline constexpr char kCompleteCommand[] = "complete";

// Answers `kestrel complete =WORD BEFORE...`, where WORD is the unfinished word, which may be empty, and
// BEFORE are the finished ones between it and the program's name. (An equals sign stands before WORD because
// some shells drop empty arguments.) The answer is a line for each word that fits: the word, and behind a tab
// what it means, if there is something to say. A word that ends in an equals sign is not complete. The line
// ":files" says that names of files fit, too.
std::string CompleteWords(const DeclaredCommand& program, const std::vector<std::string>& arguments);

}  // namespace kfx::commands
