// SPDX-License-Identifier: MIT
// The source animation, as the window obtains it from the host and owns it.
#pragma once

#include <windows.h>

namespace kfx {

// Obtains an animation from the host: the one at FileNamePath when `reopen` is set and the file exists, else
// one that the host lets the user choose. A damaged one is reported and rejected; the previous one then
// stays.
void OpenSourceAnimation(HWND window, bool reopen);

// Frees the source animation, if there is one.
void FreeSourceAnimation();

// Whether FileNamePath names an existing file.
bool RememberedSourceExists();

}  // namespace kfx
