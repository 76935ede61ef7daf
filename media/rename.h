// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <system_error>

namespace kfx {

// Renames a file. `replaces`: a file of the new name goes. Otherwise `*failure` is std::errc::file_exists
// when somebody has the name, also when another program takes it at the same moment; on a file system that
// cannot do both in one step there is a moment between looking and renaming. std::errc::permission_denied: on
// Windows another program may have one of the files open.
void RenameFile(const std::filesystem::path& from, const std::filesystem::path& to, bool replaces,
                std::error_code* failure);

}  // namespace kfx
