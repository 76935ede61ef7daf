// SPDX-License-Identifier: MIT
#include "media/rename.h"

#include <cerrno>
#include <cstdio>

#ifdef _WIN32
#include <wchar.h>
#else
#include <fcntl.h>
#include <unistd.h>
#endif

namespace kfx {

#ifdef _WIN32

void RenameToNew(const std::filesystem::path& from, const std::filesystem::path& to,
                 std::error_code* failure) {
    failure->clear();
    // Unlike the C++ library's, this one replaces nothing.
    if (_wrename(from.c_str(), to.c_str()) == 0) return;
    const int reason = errno;  // looking for the file changes it
    std::error_code ignored;
    const bool isTaken = std::filesystem::exists(to, ignored);
    failure->assign(isTaken ? EEXIST : reason, std::generic_category());
}

#else

void RenameToNew(const std::filesystem::path& from, const std::filesystem::path& to,
                 std::error_code* failure) {
    failure->clear();
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

#endif

}  // namespace kfx
