// SPDX-License-Identifier: MIT
// Runs kestrel-stage as a user does: as a program, on files.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace kfx::test {

struct StageResult {
    int exitCode = -1;
    std::string out;
    std::string err;
    std::uint64_t peakBytes = 0;  // of memory in use by the process that does the work
};

// A kestrel-stage that is still running.
struct RunningStage {
    void* process = nullptr;
    unsigned long processId = 0;
};

// Starts kestrel-stage.exe without waiting. False: it did not start.
bool StartStage(const std::vector<std::string>& arguments, RunningStage* stage);

// A process that this one (a handle) has started, opened with these rights; null: there is none. To be
// closed.
void* OpenChildOf(void* process, unsigned long access);

// Waits for its end, ends it when it hangs (which fails the test), and returns its exit code.
int WaitForStage(RunningStage* stage);

// Ends one that still runs, so that it is not in the way of the next.
void EndStage(RunningStage* stage);

// Runs kestrel-stage.exe, which stands beside this test, with the arguments (UTF-8) and waits for its end.
StageResult RunStage(const std::vector<std::string>& arguments);

// The same with --json; fails the test when the output is not one JSON object.
nlohmann::json RunStageForJson(std::vector<std::string> arguments);

// The path of a file beside this test.
std::string FileBesideTest(const std::string& name);

// A folder of the test's own, with its backslash; removed with everything in it at the end of the scope.
struct TemporaryFolder {
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::string path;
};

// The names of the files in a folder (with its backslash), sorted.
std::vector<std::string> FilesIn(const std::string& folder);

// The plug-in's files in the user's folder: none at the start of the scope; those that were found are put
// back at its end.
struct UserSettings {
    UserSettings();
    ~UserSettings();
    UserSettings(const UserSettings&) = delete;
    UserSettings& operator=(const UserSettings&) = delete;

    // The names of the plug-in's files in the folder.
    std::vector<std::string> Files() const;

    std::string folder;
    std::string path;

private:
    std::map<std::string, std::string> found;  // contents by name
};

bool FileExists(const std::string& path);
void DeleteFileAt(const std::string& path);
std::string ReadText(const std::string& path);
void WriteText(const std::string& path, const std::string& text);

}  // namespace kfx::test
