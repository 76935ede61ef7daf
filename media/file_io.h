// SPDX-License-Identifier: MIT
// Whole files in and out by UTF-8 path.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace kfx {

// What the name of a file ends in until the file is whole; a number may follow. No other program uses it, so
// that a file with this ending which nobody writes may be removed.
constexpr char kTemporaryEnding[] = ".kestrel-part";

constexpr size_t kMostFileBytes = size_t{1} << 30;

// Reads a whole file of up to kMostFileBytes. On failure returns false with one sentence in *error, path
// first.
bool ReadWholeFile(const std::string& path, std::vector<uint8_t>* content, std::string* error);

// Whether both paths lead to one file, also by links or other spellings of its name. False when one of them
// does not exist.
bool IsSameFile(const std::string& path, const std::string& other);

// To be asked before work on a result begins: false with one sentence in *error, path first, when `path` is
// one of the inputs, or when a file of this name exists and is not to be replaced. Devices and pipes may
// always be written to.
bool MayWriteFile(const std::string& path, const std::vector<std::string>& inputs, bool replace,
                  std::string* error);

// Writes a file so that `path` holds either its old content or all of the new one: the bytes go to a
// temporary file in the same folder, which is renamed at the end and removed on failure. Several programs may
// write one path at the same time; the last wins. A link stays, and the file that it leads to is replaced or
// made; devices and pipes are written to directly. Where another program has the file open in a way that
// keeps it from being replaced, that is tried for a second.
bool WriteWholeFile(const std::string& path, const std::vector<uint8_t>& content, std::string* error);

// Several files that appear together: all are written under temporary names before the first is renamed,
// and when a rename fails, the files already in place are removed. `makeContent` is asked for one file at a
// time, so that only one has to be in memory; it returns false with a sentence in *error to give up.
using MakeContent = std::function<bool(size_t index, std::vector<uint8_t>* content, std::string* error)>;
bool WriteWholeFiles(const std::vector<std::string>& paths, const MakeContent& makeContent,
                     std::string* error);

// While one is set, the two functions above write nothing: each file that they would write is given to `take`
// instead, in their order. Null: files are written again.
using TakeFile = std::function<void(const std::string& path, std::vector<uint8_t>* content)>;
void TakeWriting(TakeFile take);
bool IsWritingTaken();

// For a program that may be ended by another one while it writes: the first two calls tell that other program
// which files to remove then. The others let a user stop the writing: where one is refused, nothing is
// written. Each is called on the writing thread, and may be null.
struct WriteWatch {
    void (*making)(const std::string& path) = nullptr;  // called before each temporary file is made
    void (*placing)() = nullptr;                        // called before the first gets its final name
    bool (*goesOn)() = nullptr;                         // asked before the content of each file is made
    bool (*mayPlace)() = nullptr;                       // asked once, before the first gets its final name
};
void WatchWriting(const WriteWatch& watch);

}  // namespace kfx
