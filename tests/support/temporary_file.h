// SPDX-License-Identifier: MIT
#pragma once

#include <cstdio>

namespace kfx::test {

// An empty binary file to write and read again, which goes when it is closed. On Windows std::tmpfile takes
// its names from the clock, so that two programs which run at the same time may share one file.
std::FILE* OpenTemporaryFile();

}  // namespace kfx::test
