// SPDX-License-Identifier: MIT
// Names of controls whose text is not shown, for screen readers.
#pragma once

#include <windows.h>

namespace kfx::stage {

// Gives the control a name that readers find whatever they make of its class. Without the system's service
// for that it keeps its window text, which most of them read.
void NameForReaders(HWND control, const wchar_t* name);

}  // namespace kfx::stage
