// SPDX-License-Identifier: MIT
#include "commands/output_check.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "commands/text.h"

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
    const std::string trial = path + ".trial-" + std::to_string(getpid());
    const int file = open(trial.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (file < 0) {
        const int reason = errno;
        const std::string folder = FolderOf(path).empty() ? "this folder" : "the folder " + FolderOf(path);
        if (reason == ENOENT || reason == ENOTDIR) {
            *error = path + ": cannot be written: " + folder + " does not exist.";
        } else if (reason == EACCES || reason == EPERM || reason == EROFS) {
            *error = path + ": cannot be written: you may not write to " + folder + ".";
        } else {
            *error = path + ": cannot be written: " + std::generic_category().message(reason) + ".";
        }
        return false;
    }
    close(file);
    unlink(trial.c_str());
    return true;
}

}  // namespace kfx::commands
