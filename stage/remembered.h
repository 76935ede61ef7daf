// SPDX-License-Identifier: MIT
// What Stage's window remembers from one time to the next, in a small file of its own.
#pragma once

#include <string>

#include <windows.h>

namespace kfx::stage {

struct Remembered {
    RECT window = {};  // empty: the system chooses
    bool maximized = false;
    std::string folder;      // of the last file
    SIZE pluginWindow = {};  // what the plug-in is told when it asks
};

Remembered ReadRemembered();
void WriteRemembered(const Remembered& remembered);

}  // namespace kfx::stage
