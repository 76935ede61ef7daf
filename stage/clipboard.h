// SPDX-License-Identifier: MIT
// Pictures on the clipboard.
#pragma once

#include <cstdint>

#include <windows.h>

namespace kfx::stage {

// Puts the picture there as a bitmap with alpha and as PNG, which more programs take with its alpha. `rgba`
// has 4 * width * height bytes, top row first. False: the clipboard is another program's, or memory is short.
bool CopyPicture(HWND owner, const uint8_t* rgba, SIZE picture);

}  // namespace kfx::stage
