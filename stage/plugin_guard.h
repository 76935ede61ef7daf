// SPDX-License-Identifier: MIT
// Runs the plug-in so that a crash of it ends its thread only.
#pragma once

#include "stage/plugin_opening.h"

namespace kfx::stage {

// Calls `run` on this thread. When it crashes, the thread leaves it where it stands: `opening->crashed` is
// set, a report is written, and this function returns.
void RunGuarded(PluginOpening* opening, void (*run)(PluginOpening* opening));

}  // namespace kfx::stage
