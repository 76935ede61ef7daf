// SPDX-License-Identifier: MIT
// The engine that calls effects and build driver itself, in this process, without a window.
#pragma once

#include "commands/engine.h"

namespace kfx::commands {

// Uses the framework's settings and source: one build at a time, whose frames may be on several threads.
extern const Engine kDirectEngine;

}  // namespace kfx::commands
