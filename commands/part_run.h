// SPDX-License-Identifier: MIT
// kestrel apply --survey: builds a part of an animation.
#pragma once

#include "commands/commands.h"

namespace kfx::commands {

// The line is that of the whole animation, with its part in line.split.
Report RunPart(const CommandLine& line, const CommandContext& context);

// Whether the engine can build parts. False: `*failure` says what to do.
bool CheckPartEngine(const Engine& engine, Failure* failure);

// "frame 7", "frames 0 to 99".
std::string FramesText(size_t first, size_t last);

}  // namespace kfx::commands
