// SPDX-License-Identifier: MIT
// Names and values of the controls for screen readers, which cannot know that a slider's caption stands
// beside it, in what unit it counts, or what a picture shows. The system keeps them beside its own (direct
// annotation); where it does not, nothing is kept and it is not asked again.
#pragma once

#include <windows.h>

namespace kfx {

// Gives the controls that the window has by now, panels included, their names.
void StartScreenReaderTexts(HWND window);

// Gives all controls that have one their value.
void TellValues(HWND window);

// Gives one control its value, and tells screen readers that it is another.
void TellNewValue(HWND control);

// Takes all names and values back.
void StopScreenReaderTexts(HWND window);

}  // namespace kfx
