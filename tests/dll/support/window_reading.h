// SPDX-License-Identifier: MIT
// What windows of the test's own process show: texts, classes, and pixels drawn into a bitmap.
#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <vector>

namespace kfx::test {

std::string TextOf(HWND window);

// The name of the window's class, in lower case.
std::string ClassOf(HWND window);

// Calls `draw` with a bitmap of this size and returns its pixels as 0x00BBGGRR, row by row from the top.
std::vector<COLORREF> Draw(int width, int height, const std::function<void(HDC)>& draw);

}  // namespace kfx::test
