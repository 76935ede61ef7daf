// SPDX-License-Identifier: MIT
#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

#include "media/rename.h"

namespace kfx {

void RenameFile(const std::filesystem::path& from, const std::filesystem::path& to, bool replaces,
                std::error_code* failure) {
    failure->clear();
    if (replaces) {
        std::filesystem::rename(from, to, *failure);
        return;
    }
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return;
    failure->assign(errno, std::generic_category());
    if (*failure != std::errc::invalid_argument && *failure != std::errc::function_not_supported) return;
    // Network file systems know no such renaming, but a second name fails where there is one.
    if (link(from.c_str(), to.c_str()) == 0) {
        unlink(from.c_str());
        failure->clear();
        return;
    }
    failure->assign(errno, std::generic_category());
    if (*failure == std::errc::file_exists) return;
    std::error_code ignored;
    if (std::filesystem::exists(to, ignored)) {
        *failure = std::make_error_code(std::errc::file_exists);
        return;
    }
    std::filesystem::rename(from, to, *failure);
}

}  // namespace kfx
