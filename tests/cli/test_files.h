// SPDX-License-Identifier: MIT
// Files of a test's own. All paths are UTF-8.
#pragma once

#include <string>
#include <vector>

namespace kfx::test {

// The path of a file beside this test program.
std::string FileBesideTest(const std::string& name);

// A folder of the test's own, with its separator; removed with everything in it at the end of the scope.
struct TemporaryFolder {
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::string path;
};

// The names of what is in a folder, without folders in it, sorted.
std::vector<std::string> FilesIn(const std::string& folder);

bool FileExists(const std::string& path);
void DeleteFileAt(const std::string& path);
std::string ReadText(const std::string& path);
void WriteText(const std::string& path, const std::string& text);

}  // namespace kfx::test
