// SPDX-License-Identifier: MIT
// Paths in the system's code page. In some code pages a character takes two bytes, and the second may have a
// backslash's number: paths are looked through character by character.
#pragma once

namespace kfx {

// The file name within a path: what follows its last backslash, slash or colon.
const char* FileNameIn(const char* path);

bool EndsInBackslash(const char* path);

}  // namespace kfx
