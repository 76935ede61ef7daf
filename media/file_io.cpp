// SPDX-License-Identifier: MIT
#include "media/file_io.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <new>
#include <system_error>

#include "media/utf8_path.h"

namespace kfx {
namespace {

namespace fs = std::filesystem;

// Far beyond any animation, and a stop for devices that never end.
constexpr std::size_t kMaxFileSize = std::size_t{1} << 30;
constexpr std::size_t kReadStep = std::size_t{1} << 16;

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

// What the C library left behind, if it said anything.
std::string LastReason() { return errno != 0 ? std::generic_category().message(errno) : ""; }

// Set at the start of a program.
WriteWatch writeWatch;

// Removes temporary files, except those without a name: never made, or renamed since.
struct TemporaryFiles {
    std::vector<fs::path> paths;
    ~TemporaryFiles() {
        std::error_code ignored;
        for (const fs::path& path : paths) {
            if (!path.empty()) fs::remove(path, ignored);
        }
    }
};

fs::path UnusedNameBeside(const fs::path& target) {
    for (int number = 0;; ++number) {
        fs::path name = target;
        name += ".part" + (number > 0 ? std::to_string(number) : std::string());
        std::error_code ignored;
        if (!fs::exists(fs::symlink_status(name, ignored))) return name;
    }
}

// A link stays a link: what it leads to is replaced.
fs::path BehindLinks(const fs::path& path) {
    std::error_code failure;
    const fs::path target = fs::canonical(path, failure);
    return failure ? path : target;
}

// Devices and pipes take bytes as they come; renaming a file over them would remove them.
bool IsDevice(const fs::path& path) {
    std::error_code failure;
    return fs::is_other(path, failure) && !failure;
}

// False: `*reason` is what the C library says about it, if anything. A temporary file is removed then.
bool WriteBytes(const fs::path& path, bool temporary, const std::vector<std::uint8_t>& content,
                std::string* reason) {
    errno = 0;
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(content.data()), static_cast<std::streamsize>(content.size()));
    file.flush();
    if (temporary && file.is_open() && file.fail()) {
        // A full disk that still took a part of the bytes gives no reason, and on Windows an older one that
        // has nothing to do with it is left in errno. The next byte gets the true one;
        // a device or pipe must not receive it.
        errno = 0;
        file.clear();
        file.put('\0');
        file.flush();
        file.setstate(std::ios::failbit);
    } else {
        file.close();  // some file systems notice only here that there is no room
    }
    *reason = LastReason();
    return !file.fail();
}

bool ReadBytes(const std::string& path, std::vector<std::uint8_t>* content, std::string* error) {
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
    std::size_t size = 0;
    while (file) {
        if (size > kMaxFileSize) {
            *error = Failure(path, "the file is larger than 1 GiB", "");
            return false;
        }
        // resize() doubles the capacity, so the copies stay few without trusting a size told beforehand.
        content->resize(size + kReadStep);
        file.read(reinterpret_cast<char*>(content->data() + size), kReadStep);
        size += static_cast<std::size_t>(file.gcount());
    }
    content->resize(size);
    if (file.bad()) {
        *error = Failure(path, "the file cannot be read", LastReason());
        return false;
    }
    return true;
}

}  // namespace

bool ReadWholeFile(const std::string& path, std::vector<std::uint8_t>* content, std::string* error) {
    try {
        return ReadBytes(path, content, error);
    } catch (const std::bad_alloc&) {
        *error = Failure(path, "there is not enough memory for the file", "");
        return false;
    }
}

bool WriteWholeFile(const std::string& path, const std::vector<std::uint8_t>& content, std::string* error) {
    const auto copyContent = [&content](std::size_t, std::vector<std::uint8_t>* copy, std::string* clause) {
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
    std::vector<fs::path> targets(paths.size());
    TemporaryFiles temporary;
    std::vector<std::uint8_t> content;
    for (std::size_t i = 0; i < paths.size(); ++i) {
        if (!PathFromUtf8(paths[i], &targets[i], error)) return false;
        if (!makeContent(i, &content, error)) {
            *error = paths[i] + ": " + *error + ".";
            return false;
        }
        targets[i] = BehindLinks(targets[i]);
        temporary.paths.push_back(IsDevice(targets[i]) ? fs::path() : UnusedNameBeside(targets[i]));
        if (writeWatch.making && !temporary.paths[i].empty()) {
            writeWatch.making(Utf8Of(temporary.paths[i]));
        }
        std::string reason;
        const bool isTemporary = !temporary.paths[i].empty();
        if (!WriteBytes(isTemporary ? temporary.paths[i] : targets[i], isTemporary, content, &reason)) {
            *error = Failure(paths[i], "the file cannot be written", reason);
            return false;
        }
    }
    if (writeWatch.placing) writeWatch.placing();
    for (std::size_t i = 0; i < paths.size(); ++i) {
        if (temporary.paths[i].empty()) continue;
        std::error_code failure;
        fs::rename(temporary.paths[i], targets[i], failure);
        if (failure) {
            *error = Failure(paths[i], "the file cannot be written", failure.message());
            // Half a series would pass for a whole one.
            std::error_code ignored;
            for (std::size_t done = 0; done < i; ++done) {
                if (!IsDevice(targets[done])) fs::remove(targets[done], ignored);
            }
            return false;
        }
        temporary.paths[i].clear();
    }
    return true;
}

void WatchWriting(const WriteWatch& watch) { writeWatch = watch; }

}  // namespace kfx
