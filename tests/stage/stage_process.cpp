// SPDX-License-Identifier: MIT
#include "tests/stage/stage_process.h"

#include <gtest/gtest.h>

#include <algorithm>

#include <windows.h>
#include <psapi.h>
#include <tlhelp32.h>

#include "media/file_io.h"
#include "stage/settings_folder.h"
#include "stage/text_windows.h"

namespace kfx::test {
namespace {

using stage::Narrow;
using stage::Widen;

constexpr DWORD kLongestRun = 600000;  // the longest takes seconds, but not on a loaded machine

// As the system's own splitting of command lines undoes it.
std::wstring Quoted(const std::string& argument) {
    std::wstring quoted = L"\"";
    size_t backslashes = 0;
    for (const wchar_t c : Widen(argument)) {
        if (c == L'"') quoted.append(backslashes + 1, L'\\');
        backslashes = c == L'\\' ? backslashes + 1 : 0;
        quoted += c;
    }
    quoted.append(backslashes, L'\\');
    return quoted + L"\"";
}

std::wstring StageCommandLine(const std::vector<std::string>& arguments) {
    std::wstring commandLine = Quoted(FileBesideTest("kestrel-stage.exe"));
    for (const std::string& argument : arguments) commandLine += L" " + Quoted(argument);
    return commandLine;
}

HANDLE InheritableFile(const std::string& path) {
    SECURITY_ATTRIBUTES inheritable = {sizeof inheritable, nullptr, TRUE};
    return CreateFileW(Widen(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inheritable, CREATE_ALWAYS,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

// Waits for the process's end and watches the memory of the one that works for it.
uint64_t WaitForEnd(HANDLE process) {
    uint64_t peak = 0;
    HANDLE child = nullptr;
    const ULONGLONG start = GetTickCount64();
    while (WaitForSingleObject(process, 10) == WAIT_TIMEOUT) {
        if (!child) child = OpenChildOf(process, PROCESS_QUERY_LIMITED_INFORMATION);
        PROCESS_MEMORY_COUNTERS memory = {};
        if (child && GetProcessMemoryInfo(child, &memory, sizeof memory)) {
            peak = std::max<uint64_t>(peak, memory.PeakWorkingSetSize);
        }
        if (GetTickCount64() - start > kLongestRun) {
            ADD_FAILURE() << "kestrel-stage hangs";
            TerminateProcess(process, 99);
        }
    }
    if (child) CloseHandle(child);
    return peak;
}

}  // namespace

HANDLE OpenChildOf(HANDLE process, unsigned long access) {
    const DWORD parent = GetProcessId(process);
    const HANDLE processes = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    PROCESSENTRY32W entry = {};
    entry.dwSize = sizeof entry;
    HANDLE child = nullptr;
    for (BOOL more = Process32FirstW(processes, &entry); more && !child;
         more = Process32NextW(processes, &entry)) {
        if (entry.th32ParentProcessID == parent) {
            child = OpenProcess(access, FALSE, entry.th32ProcessID);
        }
    }
    CloseHandle(processes);
    return child;
}

std::string FileBesideTest(const std::string& name) {
    wchar_t program[32768];
    GetModuleFileNameW(nullptr, program, 32768);
    return stage::FolderOf(Narrow(program)) + name;
}

StageResult RunStage(const std::vector<std::string>& arguments) {
    const TemporaryFolder folder;
    const std::string outPath = folder.path + "out.txt", errPath = folder.path + "err.txt";
    std::wstring commandLine = StageCommandLine(arguments);

    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = InheritableFile(outPath);
    startup.hStdError = InheritableFile(errPath);
    PROCESS_INFORMATION process = {};
    StageResult result;
    const BOOL started = CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr,
                                        nullptr, &startup, &process);
    CloseHandle(startup.hStdOutput);
    CloseHandle(startup.hStdError);
    if (!started) {
        ADD_FAILURE() << "kestrel-stage.exe does not start";
        return result;
    }
    result.peakBytes = WaitForEnd(process.hProcess);
    DWORD exitCode = 0;
    GetExitCodeProcess(process.hProcess, &exitCode);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    result.exitCode = static_cast<int>(exitCode);
    result.out = ReadText(outPath);
    result.err = ReadText(errPath);
    return result;
}

bool StartStage(const std::vector<std::string>& arguments, RunningStage* stage) {
    std::wstring commandLine = StageCommandLine(arguments);
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                        &process)) {
        return false;
    }
    CloseHandle(process.hThread);
    stage->process = process.hProcess;
    stage->processId = process.dwProcessId;
    return true;
}

int WaitForStage(RunningStage* stage) {
    WaitForEnd(stage->process);
    DWORD exitCode = 0;
    GetExitCodeProcess(stage->process, &exitCode);
    CloseHandle(stage->process);
    stage->process = nullptr;
    return static_cast<int>(exitCode);
}

void EndStage(RunningStage* stage) {
    if (!stage->process) return;
    TerminateProcess(stage->process, 99);
    WaitForEnd(stage->process);
    CloseHandle(stage->process);
    stage->process = nullptr;
}

nlohmann::json RunStageForJson(std::vector<std::string> arguments) {
    arguments.emplace_back("--json");
    const StageResult result = RunStage(arguments);
    EXPECT_EQ(result.err, "");
    auto object = nlohmann::json::parse(result.out, nullptr, false);
    EXPECT_TRUE(object.is_object()) << result.out;
    if (!object.is_object()) return nlohmann::json::object();
    EXPECT_EQ(object["exitCode"], result.exitCode);
    EXPECT_EQ(object["ok"], result.exitCode == 0);
    return object;
}

TemporaryFolder::TemporaryFolder() {
    static int count = 0;
    wchar_t temporary[MAX_PATH];
    GetTempPathW(MAX_PATH, temporary);
    path = Narrow(temporary) + "kestrel-stage-test-" + std::to_string(GetCurrentProcessId()) + "-" +
           std::to_string(++count) + "\\";
    CreateDirectoryW(Widen(path).c_str(), nullptr);
    // A program that was ended by force may have had this number and left its files.
    for (const std::string& name : FilesIn(path)) DeleteFileAt(path + name);
}

TemporaryFolder::~TemporaryFolder() {
    for (const std::string& name : FilesIn(path)) DeleteFileAt(path + name);
    RemoveDirectoryW(Widen(path).c_str());
}

std::vector<std::string> FilesIn(const std::string& folder) {
    std::vector<std::string> names;
    WIN32_FIND_DATAW found;
    const HANDLE search = FindFirstFileW(Widen(folder + "*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return names;
    do {
        if (!(found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) names.push_back(Narrow(found.cFileName));
    } while (FindNextFileW(search, &found));
    FindClose(search);
    std::sort(names.begin(), names.end());
    return names;
}

UserSettings::UserSettings() : folder(stage::SettingsFolder()), path(folder + "kfxplug1.ini") {
    stage::MakeSettingsFolder();
    for (const std::string& name : Files()) {
        found[name] = ReadText(folder + name);
        DeleteFileAt(folder + name);
    }
}

UserSettings::~UserSettings() {
    for (const std::string& name : Files()) DeleteFileAt(folder + name);
    for (const auto& file : found) WriteText(folder + file.first, file.second);
}

std::vector<std::string> UserSettings::Files() const {
    std::vector<std::string> files = FilesIn(folder);
    files.erase(std::remove_if(files.begin(), files.end(),
                               [](const std::string& name) { return name.rfind("kfxplug1", 0) != 0; }),
                files.end());
    return files;
}

bool FileExists(const std::string& path) {
    return GetFileAttributesW(Widen(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}
void DeleteFileAt(const std::string& path) { DeleteFileW(Widen(path).c_str()); }

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
