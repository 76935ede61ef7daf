// SPDX-License-Identifier: MIT
#include <windows.h>

#include "media/rename.h"

namespace kfx {
namespace {

std::error_code CodeOf(DWORD error) {
    switch (error) {
        case ERROR_ALREADY_EXISTS:
        case ERROR_FILE_EXISTS:
            return std::make_error_code(std::errc::file_exists);
        // The C++ library does not know that these are refusals, too.
        case ERROR_SHARING_VIOLATION:
        case ERROR_LOCK_VIOLATION:
            return std::make_error_code(std::errc::permission_denied);
        default:
            return {static_cast<int>(error), std::system_category()};
    }
}

}  // namespace

void RenameFile(const std::filesystem::path& from, const std::filesystem::path& to, bool replaces,
                std::error_code* failure) {
    const DWORD flags = replaces ? MOVEFILE_REPLACE_EXISTING : 0;
    *failure = MoveFileExW(from.c_str(), to.c_str(), flags) ? std::error_code() : CodeOf(GetLastError());
}

}  // namespace kfx
