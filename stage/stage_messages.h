// SPDX-License-Identifier: MIT
// Messages of Stage's own to its window, from its other threads.
#pragma once

#include <windows.h>

namespace kfx::stage {

enum StageMessage : UINT {
    kProgressNoted = WM_APP,  // a Progress has changed
    kWorkDone,                // the worker has ended
    kPluginEnded,             // the plug-in's window is closed
    kPluginBuilt,             // LPARAM: the Step, which the window takes over; WPARAM: 1 for a test
    kPluginSource,            // LPARAM: the OpenedSource, which the window takes over
    kMayReplaceSource,        // answers 1 when another animation may be opened in place of the one there
    kWallStarts,              // the wall is to make its pictures
    kFilesDropped,            // on the plug-in's window; LPARAM: their paths, which the window takes over
};

}  // namespace kfx::stage
