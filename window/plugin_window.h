// SPDX-License-Identifier: MIT
// The plug-in window: the modal dialog that is the plug-in's whole user interface.
#pragma once

#include <windows.h>

#include "host/host_records.h"

namespace kfx {

// The window's private message: word parameter 0 fills the effect list, 1 shows the selected effect's panel.
constexpr UINT kWindowMessage = WM_USER + 200;
constexpr WPARAM kFillEffectList = 0;
constexpr WPARAM kShowCurrentPanel = 1;

// Runs the window, modal to `parent`; the host's record must outlive it. plugin's module, folders and fonts
// are set. 1 after Build, 0 after Cancel or when the window could not open.
INT_PTR RunPluginWindow(HWND parent, const HostContext* host);

}  // namespace kfx
