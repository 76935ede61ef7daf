// SPDX-License-Identifier: MIT
// Pictures of windows, and their texts that are cut.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include <windows.h>

#include "media/animation_writer.h"

namespace kfx::screens {

// Waits until something holds. False: it did not within two minutes.
bool WaitFor(const std::function<bool()>& condition);

// What the screen shows where the window and its tooltip stand, opaque. They must lie on the screen in front
// of others; `tip` may be null. An empty picture when the screen cannot be read.
Picture PictureOf(HWND window, HWND tip = nullptr);

// The same of a window of another process, once what it shows stays.
Picture SettledPictureOf(HWND window);

// A line for each visible control of the window whose text needs more room than the control has, such as
// "Static 47 \"Brightness:\" needs 58 x 13 and has 52 x 12", and for each right-aligned one of which less is
// seen than the system draws. Waits for the window's answers.
std::vector<std::string> CutTexts(HWND window);

}  // namespace kfx::screens
