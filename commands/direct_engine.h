// SPDX-License-Identifier: MIT
// The engine that calls effects and build driver itself, in this process, without a window.
#pragma once

#include "commands/engine.h"

namespace kfx::commands {

// Uses the framework's settings and source: one thread at a time.
extern const Engine kDirectEngine;

}  // namespace kfx::commands
