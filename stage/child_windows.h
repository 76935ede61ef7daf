// SPDX-License-Identifier: MIT
// Changes to child windows that change nothing in the system where nothing differs; they only ask for the
// place, style or text. The window's state is brought up to date as a whole, and most of it has not changed:
// some hundred changes would take longer than a message may.
#pragma once

#include <string>

#include <windows.h>

namespace kfx::stage {

// `area` is in the parent's coordinates; `flags` are more flags of SetWindowPos.
void PlaceChild(HWND child, const RECT& area, UINT flags = 0);

void EnableChild(HWND child, bool enabled);

// Showing does not activate. True: this has changed it.
bool ShowChild(HWND child, bool shown);

// Whether it is shown when its parent is.
bool IsChildShown(HWND child);

void SetChildText(HWND child, const std::wstring& text);

}  // namespace kfx::stage
