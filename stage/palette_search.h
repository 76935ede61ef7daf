// SPDX-License-Identifier: MIT
// What the plug-in's file of settings says about palettes and its window has no control for.
#pragma once

#include <string>

namespace kfx::stage {

struct PaletteSearch {
    bool fast = false;          // FastRemap
    int ditherBrightness = 20;  // of dithering in black and white
    int ditherContrast = 20;
};

// Takes the values of a line of the file by the plug-in's rules: a name may be shortened, and then stands for
// the first that begins so. A line about something else changes nothing.
void TakeSearchLine(const std::string& line, PaletteSearch* search);

// Reads the user's file as the plug-in does when its window opens. What the file does not say, or a file that
// cannot be read, leaves `search` as it was: so does the plug-in with what it has kept.
void ReadPaletteSearch(PaletteSearch* search);

}  // namespace kfx::stage
