// SPDX-License-Identifier: MIT
// The engine that loads the plug-in and moves the controls of its window.
#pragma once

#include <string>

#include "commands/command_line.h"
#include "commands/engine.h"

namespace kfx::driven {

// The program's options that only make sense with this engine.
struct DrivenOptions {
    bool throughPlugin = false;
    std::string plugin;  // as the user wrote it; empty: the DLL beside the program
    bool showWindow = false;
    int timeoutSeconds = 600;
};

// The options' names for the command line, stored in `options`.
commands::OwnOptions DrivenCommandOptions(DrivenOptions* options);

// The engine with these options, which outlive it. The plug-in sees nothing of the user's settings.
commands::Engine MakeDrivenEngine(const DrivenOptions* options);

}  // namespace kfx::driven
