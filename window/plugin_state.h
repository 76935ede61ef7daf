// SPDX-License-Identifier: MIT
// What the window's functions share. Everything that outlives the window is framework/settings.h's.
#pragma once

#include <windows.h>

#include <cstdint>

#include "framework/movable_memory.h"
#include "framework/settings.h"
#include "host/host_records.h"

namespace kfx {

struct PluginState {
    // Set when the library is loaded: dialogs, texts and data come from this module.
    HINSTANCE module;

    // Set for each run of the window, before it opens.
    char pluginFolder[kTextBytes];     // of the library itself, with a trailing backslash
    char documentsFolder[kTextBytes];  // the user's documents, with a trailing backslash; empty when unknown
    HFONT textFont;
    HFONT buttonFont;
    HFONT smallFont;

    // Set when the window opens, cleared when it is destroyed.
    HWND window;
    const HostContext* host;
    uint32_t buttonStyle;
    bool configurationUnread;  // for a reason that does not allow to write it anew when the window closes

    // The source animation's block, or null; owned here, freed when the window closes.
    MemoryHandle source;

    // Outer size of the file dialogs: the host's at first, then as the user left the last one.
    int32_t fileDialogWidth;
    int32_t fileDialogHeight;
};

extern PluginState plugin;

// Whether this is the plug-in's window, and still open. The host may close it inside any request, and whoever
// owns it while a box is over it: ask after each, before anything of the window is used again.
inline bool IsOpen(HWND window) { return window && plugin.window == window; }

}  // namespace kfx
