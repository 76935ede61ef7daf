// SPDX-License-Identifier: MIT
// Stage's own window: a source and its result side by side, and the plug-in between them.
#pragma once

#include <string>

namespace kfx::stage {

// Opens the window, with the animation at `path` when it is not empty, and runs until it is closed. Returns
// the program's exit code: 0, or 1 when no window could be opened.
int RunStageWindow(const std::string& path);

}  // namespace kfx::stage
