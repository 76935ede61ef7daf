// SPDX-License-Identifier: MIT
// A built animation's way into files.
#pragma once

#include <string>
#include <vector>

#include "commands/built_animation.h"

namespace kfx::commands {

// Writes the animation in the format that the path's ending names: .gif, .webp or .png. `*files` are the
// files made.
bool WriteResult(const std::string& path, BuiltAnimation built, const SourceRecord& source,
                 std::vector<std::string>* files, std::string* error);

}  // namespace kfx::commands
