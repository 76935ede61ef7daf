// SPDX-License-Identifier: MIT
// The plug-in window: the modal dialog that is the plug-in's whole user interface.
#pragma once

#include <windows.h>

#include "host/host_records.h"

namespace kfx {

// The window's own message; its word parameter says what is wanted.
constexpr UINT kWindowMessage = 1224;
static_assert(kWindowMessage == WM_USER + 200, "the dialogs' private messages begin at WM_USER");
constexpr WPARAM kFillEffectList = 0;    // sent once, when the window has opened
constexpr WPARAM kShowCurrentPanel = 1;  // brings the window up to date with its controls
constexpr WPARAM kComeToFront = 2;       // sent by other threads

// Runs the window, modal to `parent`; the host's record must outlive it. The caller has set plugin's
// module, folders and fonts. 1 after Build, 0 after Cancel or when the window could not open.
INT_PTR RunPluginWindow(HWND parent, const HostContext* host);

// Brings the open window, or the box that is open over it, to the front; at once on the window's own thread.
// Does nothing while no window is shown.
void BringPluginWindowToFront();

}  // namespace kfx
