// SPDX-License-Identifier: MIT
#include "media/file_io.h"

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>
#include <unordered_set>
#include <utility>

#include "media/rename.h"
#include "media/system_reason.h"
#include "media/temporary_file.h"
#include "media/utf8_path.h"

namespace kfx {
namespace {

namespace fs = std::filesystem;

// Larger than any animation. A device that never ends is given up here.
constexpr size_t kReadStep = size_t{1} << 16;

bool PathFromUtf8(const std::string& path, fs::path* result, std::string* error) {
    try {
        *result = PathOf(path);
        if (!result->empty() && path.find('\0') == std::string::npos) return true;
    } catch (const std::exception&) {
        // Windows cannot convert what is not UTF-8.
    }
    *error = path + ": this is not a file name.";
    return false;
}

std::string Failure(const std::string& path, const char* what, const std::string& reason) {
    return path + ": " + what + (reason.empty() ? "" : " (" + reason + ")") + ".";
}

// The reason for the last failure as the C library knows it; empty when it knows none.
std::string LastReason() { return errno != 0 ? ReasonOf({errno, std::generic_category()}) : ""; }

// Set once, at the start of a program.
WriteWatch writeWatch;

// Empty: files are written.
TakeFile takeFile;

// The names that MayWriteFile found free where nothing was to be replaced: another program may take one while
// its result is being made. Several threads may ask and write.
std::unordered_set<std::string> freeNames;
std::mutex freeNamesLock;

void NoteFree(const std::string& path, bool isFree) {
    const std::lock_guard<std::mutex> lock(freeNamesLock);
    if (isFree)
        freeNames.insert(path);
    else
        freeNames.erase(path);
}

bool WasFree(const std::string& path) {
    const std::lock_guard<std::mutex> lock(freeNamesLock);
    return freeNames.count(path) != 0;
}

constexpr char kFileExists[] = "the file exists; use --force to replace it";

// Asks for the content of one file of several. False: there is none; `*error` is a sentence.
bool MakeOne(const MakeContent& makeContent, size_t index, const std::string& path,
             std::vector<uint8_t>* content, std::string* error) {
    if (makeContent(index, content, error)) return true;
    *error = path + ": " + *error + ".";
    return false;
}

bool GiveWholeFiles(const std::vector<std::string>& paths, const MakeContent& makeContent,
                    std::string* error) {
    for (size_t i = 0; i < paths.size(); ++i) {
        std::vector<uint8_t> content;
        if (!MakeOne(makeContent, i, paths[i], &content, error)) return false;
        takeFile(paths[i], &content);
    }
    return true;
}

void AnnounceFile(const fs::path& path) {
    if (writeWatch.making) writeWatch.making(Utf8Of(path));
}

// A file that is replaced keeps its permissions: one that only its owner may read stays so.
void KeepPermissions(const fs::path& temporary, const fs::path& target) {
#ifndef _WIN32
    std::error_code ignored;
    const fs::file_status replaced = fs::status(target, ignored);
    if (fs::is_regular_file(replaced))
        fs::permissions(temporary, replaced.permissions() & fs::perms::all, ignored);
#else
    static_cast<void>(temporary);
    static_cast<void>(target);
#endif
}

// Gives a file its final name. Windows refuses that while another program has the file open, as virus
// scanners and viewers do for a moment: the renaming is tried again for a second there.
void PlaceFile(const fs::path& temporary, const fs::path& target, bool mustBeNew, std::error_code* failure) {
    const auto rename = [&] { RenameFile(temporary, target, !mustBeNew, failure); };
    KeepPermissions(temporary, target);
    rename();
#ifdef _WIN32
    if (!*failure) return;
    constexpr std::chrono::milliseconds kLongestWait{1000}, kPause{20};
    const auto end = std::chrono::steady_clock::now() + kLongestWait;
    std::error_code ignored;
    if (fs::is_directory(target, ignored)) return;
    while (*failure == std::errc::permission_denied && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(kPause);
        rename();
    }
#endif
}

bool Stopped(const std::string& path, std::string* error) {
    *error = path + ": the writing was stopped.";
    return false;
}

// So many files of a series are marked as being written; each takes one of the descriptors that a process may
// have.
constexpr size_t kMostLocks = 200;

// The file that a link leads to, also when it does not exist yet: that file is replaced and the link stays. A
// link that leads back to itself is returned as it is.
fs::path BehindLinks(const fs::path& path) {
    constexpr int kMostLinks = 40;  // as many as Linux follows
    std::error_code failure;
    fs::path target = fs::canonical(path, failure);
    if (!failure) return target;
    // An open pipe has a link in /proc whose text is no path.
    if (fs::exists(path, failure)) return path;
    target = path;
    for (int followed = 0; followed < kMostLinks; ++followed) {
        const fs::path next = fs::read_symlink(target, failure);
        if (failure) return target;
        target = next.is_absolute() ? next : target.parent_path() / next;
    }
    return path;
}

// Devices and pipes are written to directly: renaming a file over one would remove it.
bool IsDevice(const fs::path& path) {
    std::error_code failure;
    return fs::is_other(path, failure) && !failure;
}

// On failure returns false; `*reason` is the C library's reason, empty when it knows none. The caller removes
// a temporary file then.
bool WriteBytes(const fs::path& path, bool temporary, const std::vector<uint8_t>& content,
                std::string* reason) {
    errno = 0;
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(content.data()), static_cast<std::streamsize>(content.size()));
    file.flush();
    if (temporary && file.is_open() && file.fail()) {
        // When a full disk took only a part of the bytes, errno has no reason, or on Windows the reason of
        // an earlier failure. Writing one more byte sets the true reason. A device or pipe must not receive
        // such a byte.
        errno = 0;
        file.clear();
        file.put('\0');
        file.flush();
        file.setstate(std::ios::failbit);
    } else {
        file.close();  // some file systems report a full disk only here
    }
    *reason = LastReason();
    return !file.fail();
}

bool ReadBytes(const std::string& path, std::vector<uint8_t>* content, std::string* error) {
    content->clear();
    fs::path name;
    if (!PathFromUtf8(path, &name, error)) return false;
    std::error_code ignored;
    if (fs::is_directory(name, ignored)) {
        *error = Failure(path, "this is a folder, not a file", "");
        return false;
    }
    errno = 0;
    std::ifstream file(name, std::ios::binary);
    if (!file) {
        *error = Failure(path, "the file cannot be opened", LastReason());
        return false;
    }
    size_t size = 0;
    while (file) {
        if (size > kMostFileBytes) {
            *error = Failure(path, "the file is larger than 1 GiB", "");
            return false;
        }
        // The announced size of a file may be wrong, so the buffer grows as bytes come; resize() doubles its
        // capacity and so copies seldom.
        content->resize(size + kReadStep);
        file.read(reinterpret_cast<char*>(content->data() + size), kReadStep);
        size += static_cast<size_t>(file.gcount());
    }
    content->resize(size);
    if (file.bad()) {
        *error = Failure(path, "the file cannot be read", LastReason());
        return false;
    }
    return true;
}

}  // namespace

bool ReadWholeFile(const std::string& path, std::vector<uint8_t>* content, std::string* error) {
    try {
        return ReadBytes(path, content, error);
    } catch (const std::bad_alloc&) {
        *error = Failure(path, "there is not enough memory for the file", "");
        return false;
    }
}

bool IsSameFile(const std::string& path, const std::string& other) {
    fs::path first;
    fs::path second;
    std::string ignored;
    if (!PathFromUtf8(path, &first, &ignored) || !PathFromUtf8(other, &second, &ignored)) return false;
    std::error_code failure;
    return fs::equivalent(first, second, failure) && !failure;
}

bool MayWriteFile(const std::string& path, const std::vector<std::string>& inputs, bool replace,
                  std::string* error) {
    fs::path name;
    if (!PathFromUtf8(path, &name, error)) return false;
    std::error_code failure;
    const bool exists = fs::exists(name, failure);
    NoteFree(path, !exists && !replace);
    if (!exists || IsDevice(name)) return true;
    for (const std::string& input : inputs) {
        if (!IsSameFile(path, input)) continue;
        *error = Failure(path, "the result cannot replace its own source; choose another name", "");
        return false;
    }
    if (replace) return true;
    *error = Failure(path, kFileExists, "");
    return false;
}

bool WriteWholeFile(const std::string& path, const std::vector<uint8_t>& content, std::string* error) {
    const auto copyContent = [&content](size_t, std::vector<uint8_t>* copy, std::string* clause) {
        try {
            *copy = content;
            return true;
        } catch (const std::bad_alloc&) {
            *clause = "there is not enough memory to write the file";
            return false;
        }
    };
    return WriteWholeFiles({path}, copyContent, error);
}

bool WriteWholeFiles(const std::vector<std::string>& paths, const MakeContent& makeContent,
                     std::string* error) {
    if (takeFile) return GiveWholeFiles(paths, makeContent, error);
    std::vector<fs::path> targets(paths.size());
    // Without a path: one that was never made, or that has its final name.
    std::vector<TemporaryFile> temporary(paths.size());
    std::vector<uint8_t> content;
    for (size_t i = 0; i < paths.size(); ++i) {
        if (!PathFromUtf8(paths[i], &targets[i], error)) return false;
        if (writeWatch.goesOn && !writeWatch.goesOn()) return Stopped(paths[i], error);
        if (!MakeOne(makeContent, i, paths[i], &content, error)) return false;
        targets[i] = BehindLinks(targets[i]);
        const bool isTemporary = !IsDevice(targets[i]);
        int failure = 0;
        if (isTemporary &&
            !MakeTemporaryFile(targets[i], AnnounceFile, i < kMostLocks, &temporary[i], &failure)) {
            *error =
                Failure(paths[i], "the file cannot be written", ReasonOf({failure, std::generic_category()}));
            return false;
        }
        std::string reason;
        if (!WriteBytes(isTemporary ? temporary[i].path : targets[i], isTemporary, content, &reason)) {
            *error = Failure(paths[i], "the file cannot be written", reason);
            return false;
        }
    }
    if (!paths.empty() && writeWatch.mayPlace && !writeWatch.mayPlace()) return Stopped(paths[0], error);
    if (writeWatch.placing) writeWatch.placing();
    for (size_t i = 0; i < paths.size(); ++i) {
        if (temporary[i].path.empty()) continue;
        std::error_code failure;
        PlaceFile(temporary[i].path, targets[i], WasFree(paths[i]), &failure);
        if (failure) {
            *error = failure == std::errc::file_exists
                         ? Failure(paths[i], kFileExists, "")
                         : Failure(paths[i], "the file cannot be written", ReasonOf(failure));
            // A part of a series could be taken for all of it.
            std::error_code ignored;
            for (size_t done = 0; done < i; ++done)
                if (!IsDevice(targets[done])) fs::remove(targets[done], ignored);
            return false;
        }
        temporary[i].path.clear();
    }
    for (const std::string& path : paths) NoteFree(path, false);
    return true;
}

void TakeWriting(TakeFile take) { takeFile = std::move(take); }

bool IsWritingTaken() { return takeFile != nullptr; }

void WatchWriting(const WriteWatch& watch) { writeWatch = watch; }

}  // namespace kfx
