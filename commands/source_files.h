// SPDX-License-Identifier: MIT
// From the inputs on a command line to files: numbered names, wildcards and folders.
#pragma once

#include "commands/command_row.h"
#include "commands/exit_codes.h"

namespace kfx::commands {

// Replaces the line's inputs by the files that they name, and sorts these into the line's sources. An input
// is
// - the name of a file; everything else that is no pattern counts as one;
// - a name with %d or %0Nd, for all files that have a number there: always one source;
// - a name with * or ?, for all files whose name fits, or a folder, for all pictures in it.
// Files of one pattern are in the order of their numbers (2 before 10), and so are inputs that a shell has
// sorted as text. `use` says what several files are; where one animation is wanted and the output is a
// folder, each file is a source of its own unless they are joined, and line->batch.recursive looks into the
// folders in a folder, too. False: several files are neither joined nor for a folder, or nothing was found.
bool FindSources(InputUse use, CommandLine* line, Failure* failure);

// Whether one name stands before another one: numbers in it by their value, the rest by its bytes.
bool IsBeforeByNumber(const std::string& left, const std::string& right);

}  // namespace kfx::commands
