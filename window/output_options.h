// SPDX-License-Identifier: MIT
// The output options: check boxes, palette list, background colour, and what depends on what.
#pragma once

#include <windows.h>

namespace kfx {

// Sets the options' controls from the settings and binds them.
void BindOutputOptions(HWND window);

// Switches off what the host does not accept: true colour, supercompression.
void ApplyHostLimits(HWND window);

// Fills the palette list, with "Match original" when the source has a palette of its own, and selects
// MainPalette.
void FillPaletteList(HWND window);

// The user has chosen in the palette list.
void OnPaletteChoice(HWND window);

// Stores whether a palette is to be computed; the palette list is enabled with it.
void OnCustomPalette(HWND window);

// Enables "Build" and "Test" while there is a source, and the background colour while it is used. Enter
// presses "Build" while there is a source, else "Select...".
void EnableDependentControls(HWND window);

}  // namespace kfx
