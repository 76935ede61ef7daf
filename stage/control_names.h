// SPDX-License-Identifier: MIT
// Names of controls for screen readers, which take no label's text for them.
#pragma once

#include <windows.h>

#include "stage/command_ids.h"

namespace kfx::stage {

struct ControlName {
    CommandId control;
    const wchar_t* name;
};

// Of those that have no text of their own.
inline constexpr ControlName kControlNames[] = {
    {kFrameSlider, L"Frame"}, {kStatusProgress, L"Progress"}, {kHistoryList, L"Steps"}, {kCanvas, L"Picture"},
    {kWall, L"Effects"},
};

// Null: the control is read with its text.
const wchar_t* NameOfControl(int control);

// Says the control's name to screen readers, also where another one stands before it in the order of windows.
void NameForReaders(HWND control);

}  // namespace kfx::stage
