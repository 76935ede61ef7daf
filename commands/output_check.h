// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace kfx::commands {

// Tries whether a file could be written at `path` (as the user wrote it), before the work is done; nothing is
// left behind, and a file, device or pipe that is there is not opened. False: `*error` is one sentence, path
// first.
bool CheckWritable(const std::string& path, std::string* error);

// The same of a file that is to be made in `folder`, with its separator ("" is the current one): that of
// `path`, or one around it where that is still to be made. What is at `path` does not count.
bool CheckFolder(const std::string& path, const std::string& folder, std::string* error);

}  // namespace kfx::commands
