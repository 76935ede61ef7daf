// SPDX-License-Identifier: MIT
// The pictures on Stage's buttons, drawn from polygons at any size in any colour.
#pragma once

#include <windows.h>

namespace kfx::stage {

enum class BarIcon {
    None,
    Open,
    Save,
    Effects,
    Undo,
    Redo,
    AllEffects,
    SideBySide,
    Wipe,
    First,
    Previous,
    Play,
    Pause,
    Next,
    Last,
    Slower,
    Faster,
};

// On a place that is filled with `ground`.
void DrawBarIcon(HDC target, const RECT& place, BarIcon icon, COLORREF color, COLORREF ground);

}  // namespace kfx::stage
