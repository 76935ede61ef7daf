// SPDX-License-Identifier: MIT
// Whether a result is there already, for --skip-done.
#pragma once

#include <string>
#include <vector>

#include "commands/command_line.h"
#include "media/animation.h"

namespace kfx::commands {

// Whether `files`, the results of the line's command for this source (read and edited), are there and need
// not be made again: each is whole, not older than any input, as large as the source, and together they have
// no more frames than it. One that holds a recipe was made by this version with the line's options, and shows
// what it was made to show; a seed that was not given does not count. False: `*reason` is a clause; empty
// when there is nothing at all.
bool IsDone(const CommandLine& line, const Animation& source, const std::vector<std::string>& files,
            std::string* reason);

}  // namespace kfx::commands
