// SPDX-License-Identifier: MIT
// The file that a result is written to before it gets its name. A program that is killed leaves it behind;
// whoever makes the same result next recognises it and removes it.
#pragma once

#include <filesystem>
#include <functional>
#include <string>

namespace kfx {

// A new, empty file. While it is open here, other programs know that somebody writes it. Removed at the end
// of the scope unless the path was emptied.
struct TemporaryFile {
    TemporaryFile() = default;
    ~TemporaryFile();
    TemporaryFile(TemporaryFile&& other) noexcept;
    TemporaryFile& operator=(TemporaryFile&&) = delete;

    std::filesystem::path path;
    int lock = -1;  // an open descriptor; -1: none, the system has other means or the file was one too many
};

// Makes a file beside `target`, named after it. Nobody else has it, also when several programs make the same
// result at the same time. Files that a killed program left for this target are removed. `announce` is told
// the name before the file is made. False: `*reason` is the system's number for why not.
bool MakeTemporaryFile(const std::filesystem::path& target,
                       const std::function<void(const std::filesystem::path&)>& announce, bool keepsLock,
                       TemporaryFile* file, int* reason);

}  // namespace kfx
