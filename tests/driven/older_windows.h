// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace kfx::test {

// Copies a program that stands beside the test, and the plug-in, into a folder, without what the program's
// manifest says of its code page. So it runs as on a Windows before that of 2019, which does not know it:
// with the system's own code page. Returns the copy's path.
std::string CopyForOlderWindows(const std::string& program, const std::string& folder);

}  // namespace kfx::test
