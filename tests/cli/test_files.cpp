// SPDX-License-Identifier: MIT
#include "tests/cli/test_files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <vector>

#ifdef _WIN32
#include <windows.h>
#else
#include <unistd.h>
#endif

#include "media/file_io.h"
#include "media/utf8_path.h"

namespace kfx::test {
namespace {

namespace fs = std::filesystem;

#ifdef _WIN32
fs::path ThisProgram() {
    wchar_t program[32768];
    return std::wstring(program, GetModuleFileNameW(nullptr, program, 32768));
}
unsigned long ThisProcess() { return GetCurrentProcessId(); }
#else
fs::path ThisProgram() { return fs::read_symlink("/proc/self/exe"); }
unsigned long ThisProcess() { return static_cast<unsigned long>(getpid()); }
#endif

fs::path NewFolder() {
    static int count = 0;
    const std::string name = "kestrel-test-" + std::to_string(ThisProcess()) + "-" + std::to_string(++count);
    fs::path folder = fs::temp_directory_path() / name;
    // A program that was ended by force may have had this number and left its files.
    fs::remove_all(folder);
    fs::create_directory(folder);
    return folder;
}

}  // namespace

std::string FileBesideTest(const std::string& name) {
    return Utf8Of(ThisProgram().parent_path() / PathOf(name));
}

TemporaryFolder::TemporaryFolder() : path(Utf8Of(NewFolder() / "")) {}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    fs::remove_all(PathOf(path), ignored);
}

std::vector<std::string> FilesIn(const std::string& folder) {
    std::vector<std::string> names;
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(PathOf(folder), ignored)) {
        if (!fs::is_directory(entry.symlink_status())) names.push_back(Utf8Of(entry.path().filename()));
    }
    std::sort(names.begin(), names.end());
    return names;
}

bool FileExists(const std::string& path) { return fs::exists(fs::symlink_status(PathOf(path))); }

void DeleteFileAt(const std::string& path) {
    std::error_code ignored;
    fs::remove(PathOf(path), ignored);
}

std::string ReadText(const std::string& path) {
    std::vector<uint8_t> bytes;
    std::string error;
    EXPECT_TRUE(ReadWholeFile(path, &bytes, &error)) << error;
    return {bytes.begin(), bytes.end()};
}

void WriteText(const std::string& path, const std::string& text) {
    std::string error;
    EXPECT_TRUE(WriteWholeFile(path, std::vector<uint8_t>(text.begin(), text.end()), &error)) << error;
}

}  // namespace kfx::test
