// SPDX-License-Identifier: MIT
// What the library exports, undecorated and by these names only (kfxplug1.def).
#pragma once

#include <windows.h>

#include "host/host_records.h"

extern "C" {

// Keeps the module's handle when the library is loaded. Always TRUE.
BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved);

// Fills the record, up to the size that the host has put into it. Always 1.
uint64_t WINAPI PLUGIN16GetPluginParams(kfx::PluginInfo* info);

// Runs the plug-in's window, modal to `parent`. `host` must stay valid until it returns. 1 when the window
// ran; 0 when the host is too old, or when the window is open already, which then comes to the front.
uint64_t WINAPI PLUGIN16DoBuild(HWND parent, const kfx::HostContext* host);
}
