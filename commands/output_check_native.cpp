// SPDX-License-Identifier: MIT
#include "commands/output_check.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "commands/text.h"
#include "media/file_io.h"

namespace kfx::commands {

bool CheckWritable(const std::string& path, std::string* error) {
    struct stat found = {};
    const bool exists = stat(path.c_str(), &found) == 0;
    if (exists && S_ISDIR(found.st_mode)) {
        *error = path + ": is a folder.";
        return false;
    }
    if (exists && access(path.c_str(), W_OK) != 0) {
        *error = path + ": is write-protected.";
        return false;
    }
    // Devices and pipes are written to directly, so nothing stands beside them.
    if (exists && !S_ISREG(found.st_mode)) return true;
    return CheckFolder(path, FolderOf(path), error);
}

bool CheckFolder(const std::string& path, const std::string& folder, std::string* error) {
    struct stat found = {};
    // The longest name is the temporary one.
    if (lstat((folder + FileNameOf(path) + kTemporaryEnding).c_str(), &found) != 0 && errno == ENAMETOOLONG) {
        *error = path + ": cannot be written: the name is too long.";
        return false;
    }
    // Asked of the folder: a file made on trial would stay behind when the program is interrupted.
    if (faccessat(AT_FDCWD, folder.empty() ? "." : folder.c_str(), W_OK | X_OK, AT_EACCESS) == 0) return true;
    const int reason = errno;
    const std::string named = folder.empty() ? "this folder" : "the folder " + folder;
    if (reason == ENOENT || reason == ENOTDIR) {
        *error = path + ": cannot be written: " + named + " does not exist.";
    } else if (reason == EACCES || reason == EPERM || reason == EROFS) {
        *error = path + ": cannot be written: you may not write to " + named + ".";
    } else {
        *error = path + ": cannot be written: " + named + " cannot be used (error " + std::to_string(reason) +
                 ").";
    }
    return false;
}

}  // namespace kfx::commands
