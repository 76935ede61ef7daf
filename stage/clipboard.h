// SPDX-License-Identifier: MIT
// Pictures on the clipboard.
#pragma once

#include <cstdint>
#include <vector>

#include <windows.h>

namespace kfx::stage {

// A picture as the clipboard takes it.
struct ClipboardPicture {
    std::vector<uint8_t> bitmap;
    std::vector<uint8_t> png;  // empty: it could not be made
};

// For any thread. `rgba` has 4 * width * height bytes, top row first.
ClipboardPicture MakeClipboardPicture(const uint8_t* rgba, SIZE picture);

// For the window's thread: replaces what is on the clipboard. False: another program keeps the clipboard, or
// there is no memory.
bool PutOnClipboard(HWND owner, const ClipboardPicture& picture);

}  // namespace kfx::stage
