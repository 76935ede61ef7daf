// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

namespace kfx {

// The path of a special folder of the user's (CSIDL_...), with a trailing backslash, in `path` of `bytes`
// bytes. False, with an empty path: the shell knows no such folder.
bool FindShellFolder(int folder, char* path, size_t bytes);

}  // namespace kfx
