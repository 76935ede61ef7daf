// SPDX-License-Identifier: MIT
// The options of the edits around the effect, and how their values are written.
#pragma once

#include "commands/frame_edits.h"

namespace CLI {
class App;
}

namespace kfx::commands {

// Adds --frames, --reverse, --crop, --resize, --speed, --fps and --loop to a command; they are stored in
// `*edits`.
void AddEditOptions(CLI::App* command, FrameEdits* edits);

}  // namespace kfx::commands
