// SPDX-License-Identifier: MIT
// What the current effect does, in one sentence, drawn on the window where the effect's panel leaves room.
#pragma once

#include <windows.h>

namespace kfx {

// Draws the sentence below the last control of the panel; nothing where there is no room for it.
void DrawEffectSentence(HWND window, HDC dc);

// Another panel is shown: the sentence is drawn anew.
void RepaintEffectSentence(HWND window);

}  // namespace kfx
