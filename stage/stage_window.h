// SPDX-License-Identifier: MIT
// Stage's own window: a source and its result, and the plug-in between them.
#pragma once

#include <string>
#include <vector>

namespace kfx::stage {

// Opens the window, with the first of the files, and runs until it is closed; the other files stand among the
// recent ones. Returns the program's exit code: 0, or 1 when no window could be opened.
int RunStageWindow(const std::vector<std::string>& paths);

}  // namespace kfx::stage
