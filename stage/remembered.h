// SPDX-License-Identifier: MIT
// What Stage's window remembers from one time to the next, in a small file of its own.
#pragma once

#include <string>
#include <vector>

#include <windows.h>

namespace kfx::stage {

constexpr size_t kMostRecent = 10;

struct Remembered {
    RECT window = {};  // as WINDOWPLACEMENT has it; empty: the system chooses
    LONG dpi = 96;     // of the screen that it was on
    LONG maximized = 0;
    SIZE pluginWindow = {};  // what the plug-in is told when it asks
    LONG arrangement = 0;    // of the view, as is the rest
    LONG ground = 0;
    LONG groundColor = RGB(0, 160, 80);
    LONG forever = 0;
    std::string folder;               // of the last file
    std::vector<std::string> recent;  // paths of the last files, the latest one first
};

Remembered ReadRemembered();
void WriteRemembered(const Remembered& remembered);

// Puts the path first among the recent ones.
void RememberFile(Remembered* remembered, const std::string& path);

}  // namespace kfx::stage
