// SPDX-License-Identifier: MIT
// Calls that end with a crash of their own and not with Stage's.
#pragma once

#include "driven/plugin_library.h"
#include "stage/crash_report.h"
#include "stage/plugin_opening.h"

namespace kfx::stage {

// For the window's thread, before the first of the calls below.
void PrepareGuard();

// Calls `call` on this thread. When it crashes, the thread leaves it where it stands, without freeing what it
// holds: false, and `facts` say how. `library` is the plug-in, whose code handles no exceptions itself; null:
// the call runs none of it. While the plug-in is loaded the loader may handle a crash: that is noted in
// `facts`, and the call returns as usual. Nested calls are not for one thread.
bool CallGuarded(void (*call)(void* context), void* context, const driven::PluginLibrary* library,
                 CrashFacts* facts);

// Calls `run` on the plug-in's thread. When it crashes, `opening->crashed` is set, a report is written, the
// plug-in's window is closed, and this function returns; where the plug-in does not let its window go, the
// thread tells Stage that the plug-in has ended, and stops.
void RunGuarded(PluginOpening* opening, void (*run)(PluginOpening* opening));

}  // namespace kfx::stage
