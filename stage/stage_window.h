// SPDX-License-Identifier: MIT
// Stage's own window: a source and its result side by side, and the plug-in between them.
#pragma once

#include <string>

namespace kfx::stage {

// Opens the window, with the animation at `path` when it is not empty, and runs until it is closed. `plugin`
// is the DLL's path; empty: the one beside this program. Returns the program's exit code.
int RunStageWindow(const std::string& path, const std::string& plugin);

}  // namespace kfx::stage
