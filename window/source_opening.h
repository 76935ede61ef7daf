// SPDX-License-Identifier: MIT
// The source animation, as the window obtains it from the host and owns it.
#pragma once

#include <windows.h>

#include <cstdint>

namespace kfx {

// Obtains an animation from the host: the one at FileNamePath when `reopen` is set and the file exists, else
// one that the host lets the user choose. A damaged one is reported and rejected; the previous one then
// stays.
void OpenSourceAnimation(HWND window, bool reopen);

// Frees the source animation, if there is one.
void FreeSourceAnimation();

// Whether FileNamePath names an existing file.
bool RememberedSourceExists();

// What the window shows of the current source.
struct SourceFacts {
    uint32_t width;
    uint32_t height;
    uint32_t globalColors;  // 0: no palette of its own
};

// False: there is no source.
bool ReadSourceFacts(SourceFacts* facts);

}  // namespace kfx
