// SPDX-License-Identifier: MIT
// What shells load to complete kestrel's command lines.
#pragma once

#include <string>
#include <vector>

namespace kfx::commands {

// The shells that there is a script for.
std::vector<std::string> CompletionShells();

// The script for a shell of that list; empty for another one.
std::string CompletionScript(const std::string& shell);

}  // namespace kfx::commands
