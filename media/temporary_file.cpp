// SPDX-License-Identifier: MIT
#include "media/temporary_file.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>

#ifdef _WIN32
#include <io.h>
#else
#include <sys/file.h>
#include <unistd.h>
#endif

#include "media/file_io.h"

namespace kfx {
namespace {

namespace fs = std::filesystem;

// So many names of a target are looked at for files that nobody writes any more. Each killed program leaves
// one at most, and the next removes it.
constexpr int kNamesToClean = 4;
constexpr int kMostNames = 1000;

fs::path NameOf(const fs::path& target, int number) {
    fs::path name = target;
    name += kTemporaryEnding + (number > 0 ? std::to_string(number) : std::string());
    return name;
}

#ifdef _WIN32

// A file that somebody has open cannot be removed.
void RemoveLeftover(const fs::path& name) {
    std::error_code ignored;
    fs::remove(name, ignored);
}

bool Create(const fs::path& name, int* descriptor) {
    *descriptor =
        _wopen(name.c_str(), _O_CREAT | _O_EXCL | _O_RDWR | _O_BINARY | _O_NOINHERIT, _S_IREAD | _S_IWRITE);
    return *descriptor >= 0;
}

void Close(int descriptor) { _close(descriptor); }

// A file that is open here could not be renamed.
constexpr bool kLocks = false;

#else

// Whether the name is that of the open file, and not of another or none.
bool IsNamed(int descriptor, const fs::path& name) {
    struct stat opened = {}, named = {};
    return fstat(descriptor, &opened) == 0 && lstat(name.c_str(), &named) == 0 &&
           opened.st_ino == named.st_ino && opened.st_dev == named.st_dev;
}

// Who has the lock on the file that has the name is the only one who may remove it. A system without locks
// leaves everything where it is.
void RemoveLeftover(const fs::path& name) {
    const int descriptor = open(name.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    if (descriptor < 0) return;
    struct stat opened = {};
    const bool isFile = fstat(descriptor, &opened) == 0 && S_ISREG(opened.st_mode);
    if (isFile && flock(descriptor, LOCK_EX | LOCK_NB) == 0 && IsNamed(descriptor, name))
        unlink(name.c_str());
    close(descriptor);
}

bool Create(const fs::path& name, int* descriptor) {
    *descriptor = open(name.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, 0666);
    if (*descriptor < 0) return false;
    // Between the two calls another program may take the new file for one that was left behind.
    struct stat made = {};
    if ((flock(*descriptor, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK) &&
        fstat(*descriptor, &made) == 0 && made.st_nlink > 0)
        return true;
    close(*descriptor);
    errno = EEXIST;
    return false;
}

void Close(int descriptor) { close(descriptor); }

constexpr bool kLocks = true;

#endif

bool IsThere(const fs::path& name) {
    std::error_code ignored;
    return fs::exists(fs::symlink_status(name, ignored));
}

}  // namespace

TemporaryFile::TemporaryFile(TemporaryFile&& other) noexcept
    : path(std::exchange(other.path, {})), lock(std::exchange(other.lock, -1)) {}

TemporaryFile::~TemporaryFile() {
    std::error_code ignored;
    if (!path.empty()) fs::remove(path, ignored);
    if (lock >= 0) Close(lock);
}

bool MakeTemporaryFile(const fs::path& target, const std::function<void(const fs::path&)>& announce,
                       bool keepsLock, TemporaryFile* file, int* reason) {
    for (int number = 0; number < kMostNames; ++number) {
        const bool isMade = !file->path.empty();
        if (isMade && number >= kNamesToClean) return true;
        const fs::path name = NameOf(target, number);
        // Its name is not taken again at once: on a shared folder whose locks do not reach other machines
        // the file may still be somebody's, who then must not rename ours.
        if (IsThere(name)) {
            if (number < kNamesToClean) RemoveLeftover(name);
            continue;
        }
        if (isMade) continue;
        int descriptor = -1;
        if (announce) announce(name);
        if (!Create(name, &descriptor)) {
            if (errno == EEXIST) continue;
            *reason = errno;
            return false;
        }
        file->path = name;
        if (kLocks && keepsLock)
            file->lock = descriptor;
        else
            Close(descriptor);
    }
    *reason = EEXIST;
    return !file->path.empty();
}

}  // namespace kfx
