// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <system_error>

namespace kfx {

// Renames a file to a name that nobody has: `*failure` is std::errc::file_exists when somebody has it, also
// when another program takes it at the same moment. On a file system that cannot do both in one step there
// is a moment between looking and renaming.
void RenameToNew(const std::filesystem::path& from, const std::filesystem::path& to,
                 std::error_code* failure);

}  // namespace kfx
