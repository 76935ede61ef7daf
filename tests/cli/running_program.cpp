// SPDX-License-Identifier: MIT
#include "tests/cli/running_program.h"

#include <gtest/gtest.h>

#include <algorithm>

#include <windows.h>
#include <psapi.h>
#include <tlhelp32.h>

#include "commands/text_windows.h"
#include "tests/cli/program.h"
#include "tests/cli/test_files.h"

namespace kfx::test {
namespace {

using commands::QuotedArgument;
using commands::Widen;

constexpr DWORD kLongestRun = 600000;  // the longest takes seconds, but not on a loaded machine

std::wstring CommandLineOf(const std::string& program, const std::vector<std::string>& arguments) {
    std::wstring commandLine = QuotedArgument(program);
    for (const std::string& argument : arguments) commandLine += L" " + QuotedArgument(argument);
    return commandLine;
}

HANDLE InheritableFile(const std::string& path) {
    SECURITY_ATTRIBUTES inheritable = {sizeof inheritable, nullptr, TRUE};
    return CreateFileW(Widen(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inheritable, CREATE_ALWAYS,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

HANDLE InheritableInput(const std::string& path) {
    SECURITY_ATTRIBUTES inheritable = {sizeof inheritable, nullptr, TRUE};
    return CreateFileW(Widen(path).c_str(), GENERIC_READ, FILE_SHARE_READ, &inheritable, OPEN_EXISTING,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

// A process that this one has started, opened for a look at its memory; null: there is none. To be closed.
HANDLE OpenChildOf(HANDLE process) {
    const DWORD parent = GetProcessId(process);
    const HANDLE processes = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    PROCESSENTRY32W entry = {};
    entry.dwSize = sizeof entry;
    HANDLE child = nullptr;
    for (BOOL more = Process32FirstW(processes, &entry); more && !child;
         more = Process32NextW(processes, &entry)) {
        if (entry.th32ParentProcessID == parent) {
            child = OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, entry.th32ProcessID);
        }
    }
    CloseHandle(processes);
    return child;
}

// Waits for the process's end and watches the memory of the one that works for it.
uint64_t WatchUntilEnd(HANDLE process) {
    uint64_t peak = 0;
    HANDLE child = nullptr;
    const ULONGLONG start = GetTickCount64();
    while (WaitForSingleObject(process, 10) == WAIT_TIMEOUT) {
        if (!child) child = OpenChildOf(process);
        PROCESS_MEMORY_COUNTERS memory = {};
        if (child && GetProcessMemoryInfo(child, &memory, sizeof memory)) {
            peak = std::max<uint64_t>(peak, memory.PeakWorkingSetSize);
        }
        if (GetTickCount64() - start > kLongestRun) {
            ADD_FAILURE() << "the program hangs";
            TerminateProcess(process, 99);
        }
    }
    if (child) CloseHandle(child);
    return peak;
}

}  // namespace

ProgramResult RunKestrel(const std::vector<std::string>& arguments, const std::string& inputPath) {
    return RunProgram(FileBesideTest("kestrel.exe"), arguments, inputPath);
}

ProgramResult RunProgram(const std::string& path, const std::vector<std::string>& arguments,
                         const std::string& inputPath) {
    const TemporaryFolder folder;
    const std::string outPath = folder.path + "out.txt", errPath = folder.path + "err.txt";
    std::wstring commandLine = CommandLineOf(path, arguments);

    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    if (!inputPath.empty()) startup.hStdInput = InheritableInput(inputPath);
    startup.hStdOutput = InheritableFile(outPath);
    startup.hStdError = InheritableFile(errPath);
    PROCESS_INFORMATION process = {};
    ProgramResult result;
    BOOL started = FALSE;
    DWORD error = ERROR_INTERNAL_ERROR;
    // Wine gives a start up with this error when its server is slow; see StartChild in child_process_windows.
    for (int attempt = 0; !started && error == ERROR_INTERNAL_ERROR && attempt < 3; ++attempt) {
        started = CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                                 &startup, &process);
        error = GetLastError();
    }
    if (startup.hStdInput) CloseHandle(startup.hStdInput);
    CloseHandle(startup.hStdOutput);
    CloseHandle(startup.hStdError);
    if (!started) {
        ADD_FAILURE() << path << " does not start: error " << error;
        return result;
    }
    result.peakBytes = WatchUntilEnd(process.hProcess);
    DWORD exitCode = 0;
    GetExitCodeProcess(process.hProcess, &exitCode);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    result.exitCode = static_cast<int>(exitCode);
    result.out = ReadText(outPath);
    result.err = ReadText(errPath);
    return result;
}

bool StartProgram(const std::string& path, const std::vector<std::string>& arguments,
                  RunningProgram* program) {
    std::wstring commandLine = CommandLineOf(path, arguments);
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                        &process)) {
        return false;
    }
    CloseHandle(process.hThread);
    program->process = process.hProcess;
    program->processId = process.dwProcessId;
    return true;
}

bool StartThroughPlugin(std::vector<std::string> arguments, RunningProgram* program) {
    arguments.emplace_back("--through-plugin");
    return StartProgram(FileBesideTest("kestrel.exe"), arguments, program);
}

int WaitForEnd(RunningProgram* program) {
    WatchUntilEnd(program->process);
    DWORD exitCode = 0;
    GetExitCodeProcess(program->process, &exitCode);
    CloseHandle(program->process);
    program->process = nullptr;
    return static_cast<int>(exitCode);
}

void EndProgram(RunningProgram* program) {
    if (!program->process) return;
    TerminateProcess(program->process, 99);
    WatchUntilEnd(program->process);
    CloseHandle(program->process);
    program->process = nullptr;
}

}  // namespace kfx::test
