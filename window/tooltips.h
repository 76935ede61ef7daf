// SPDX-License-Identifier: MIT
// Tooltips: what the control under the pointer does.
#pragma once

#include <windows.h>

namespace kfx {

// Prepares the tooltips of all controls that the window has by now, panels included. Where the system
// refuses, there are none, and nothing else changes. Does nothing while there are some.
void StartTooltips(HWND window);

void StopTooltips();

// Takes each mouse message of the window and its controls before they do. The controls need no procedure of
// the tooltips' for that.
void TellTooltips(const MSG& message);

}  // namespace kfx
