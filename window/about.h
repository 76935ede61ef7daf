// SPDX-License-Identifier: MIT
#pragma once

#include <windows.h>

namespace kfx {

// Runs the About box, modal to `owner`.
void ShowAbout(HWND owner);

}  // namespace kfx
