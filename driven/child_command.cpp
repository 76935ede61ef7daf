// SPDX-License-Identifier: MIT
#include "driven/child_command.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>

#include <windows.h>

#include "commands/console.h"
#include "commands/text_windows.h"
#include "media/file_io.h"

namespace kfx::driven {

using namespace commands;

namespace {

// In front of the child's arguments, followed by its handles of the pipe and the mutex.
constexpr char kChildOption[] = "--child-of-kestrel";

// What the parent and its child share. The child sends lines of JSON through the pipe: {"temporary": path}
// before it makes a file, {"plugin": true} before it loads one, {"report": ...} at its end. It takes the
// mutex before the first file gets its final name, and keeps it until it ends; who interrupts it takes it
// too, so that no half of a series appears.
struct Shared {
    HANDLE pipe = nullptr;
    HANDLE placing = nullptr;
};

// Set once, before anything runs that reads it.
Shared shared;

// The interrupt handler runs on a thread of its own, at any time.
std::atomic<HANDLE> child{nullptr};
std::atomic<bool> interrupted{false};

struct OwnedHandle {
    HANDLE handle = nullptr;
    OwnedHandle() = default;
    ~OwnedHandle() { Close(); }
    OwnedHandle(const OwnedHandle&) = delete;
    OwnedHandle& operator=(const OwnedHandle&) = delete;

    void Close() {
        if (handle) CloseHandle(handle);
        handle = nullptr;
    }
};

BOOL WINAPI InterruptChild(DWORD) {
    // However long it takes: a child that puts its files in place ends by itself.
    WaitForSingleObject(shared.placing, INFINITE);
    interrupted = true;
    if (child) TerminateProcess(child, kExitInterrupted);
    // The main thread ends the process. When a console is closed, returning from here would end it sooner.
    Sleep(INFINITE);
    return TRUE;
}

BOOL WINAPI LeaveToParent(DWORD) { return TRUE; }

// The parent says that the plug-in has crashed; a box or a debugger would keep a script waiting.
LONG WINAPI EndCrashed(EXCEPTION_POINTERS* exception) {
    TerminateProcess(GetCurrentProcess(), exception->ExceptionRecord->ExceptionCode);
    return EXCEPTION_EXECUTE_HANDLER;
}

// The program's name, as the system splits it off.
std::wstring WithoutProgram(const std::wstring& commandLine) {
    const size_t end = commandLine[0] == L'"' ? commandLine.find(L'"', 1) : commandLine.find_first_of(L" \t");
    return end == std::wstring::npos ? L"" : commandLine.substr(end + (commandLine[0] == L'"' ? 1 : 0));
}

std::wstring ChildCommandLine(const std::wstring& program) {
    const auto number = [](HANDLE handle) {
        return L" " + std::to_wstring(reinterpret_cast<uintptr_t>(handle));
    };
    return L"\"" + program + L"\" " + Widen(kChildOption) + number(shared.pipe) + number(shared.placing) +
           L" " + WithoutProgram(GetCommandLineW());
}

// Makes the pipe and the mutex. The child inherits both; the parent keeps the reading end.
bool MakeShared(OwnedHandle* reading) {
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    shared.placing = CreateMutexW(&inherited, FALSE, nullptr);
    return shared.placing && CreatePipe(&reading->handle, &shared.pipe, &inherited, 0) &&
           SetHandleInformation(reading->handle, HANDLE_FLAG_INHERIT, 0);
}

// A job whose processes end with the last handle to it: a child does not outlive its parent. Null: none.
HANDLE MakeJob() {
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    const HANDLE job = CreateJobObjectW(nullptr, nullptr);
    if (!job || SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof limits))
        return job;
    CloseHandle(job);
    return nullptr;
}

// Starts the child with the handles that it needs, and no other of this process's.
bool CreateChild(const wchar_t* program, std::wstring commandLine, PROCESS_INFORMATION* process) {
    STARTUPINFOEXW startup = {};
    startup.StartupInfo.cb = sizeof startup;
    startup.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
    startup.StartupInfo.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    startup.StartupInfo.hStdOutput = GetStdHandle(STD_OUTPUT_HANDLE);
    startup.StartupInfo.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    // Each may stand in the list once, and only when it can be inherited.
    std::vector<HANDLE> handles = {shared.pipe, shared.placing};
    for (const HANDLE handle :
         {startup.StartupInfo.hStdInput, startup.StartupInfo.hStdOutput, startup.StartupInfo.hStdError}) {
        DWORD flags = 0;
        if (handle && GetHandleInformation(handle, &flags) && (flags & HANDLE_FLAG_INHERIT) &&
            std::find(handles.begin(), handles.end(), handle) == handles.end()) {
            handles.push_back(handle);
        }
    }
    SIZE_T size = 0;
    InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
    std::vector<uint64_t> memory(size / sizeof(uint64_t) + 1);
    startup.lpAttributeList = reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(memory.data());
    if (!InitializeProcThreadAttributeList(startup.lpAttributeList, 1, 0, &size)) return false;
    const bool created =
        UpdateProcThreadAttribute(startup.lpAttributeList, 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST,
                                  handles.data(), handles.size() * sizeof(HANDLE), nullptr, nullptr) &&
        CreateProcessW(program, commandLine.data(), nullptr, nullptr, TRUE,
                       CREATE_SUSPENDED | EXTENDED_STARTUPINFO_PRESENT, nullptr, nullptr,
                       &startup.StartupInfo, process);
    DeleteProcThreadAttributeList(startup.lpAttributeList);
    return created;
}

bool StartChild(HANDLE job, PROCESS_INFORMATION* process) {
    wchar_t program[32768];
    const DWORD length = GetModuleFileNameW(nullptr, program, 32768);
    if (length == 0 || length == 32768) return false;
    // One more way to the user's settings, which no command needs.
    SetEnvironmentVariableW(L"APPDATA", nullptr);
    if (!CreateChild(program, ChildCommandLine(program), process)) return false;
    if (!AssignProcessToJobObject(job, process->hProcess)) {
        const DWORD error = GetLastError();
        TerminateProcess(process->hProcess, kExitEngine);
        CloseHandle(process->hThread);
        CloseHandle(process->hProcess);
        SetLastError(error);
        return false;
    }
    child = process->hProcess;
    if (interrupted) TerminateProcess(process->hProcess, kExitInterrupted);
    ResumeThread(process->hThread);
    CloseHandle(process->hThread);
    return true;
}

// All that the child sends, until it ends.
std::string ReadToEnd(HANDLE pipe) {
    std::string text;
    char part[4096];
    DWORD count = 0;
    while (ReadFile(pipe, part, sizeof part, &count, nullptr) && count > 0) text.append(part, count);
    return text;
}

std::string CodeText(DWORD code) {
    if (code < 256) return std::to_string(code);
    char text[16];
    wsprintfA(text, "0x%08lX", code);
    return text;
}

// What the child has sent until its end.
struct Received {
    bool reported = false;
    bool usedPlugin = false;
    Report report;
    std::vector<std::string> temporary;
};

// Throws where it does not hold what it should.
Report ReceivedReport(const nlohmann::ordered_json& sent) {
    Report report;
    report.exitCode = static_cast<ExitCode>(sent.at("exitCode").get<int>());
    report.error = sent.at("error").get<std::string>();
    report.notes = sent.at("notes").get<std::vector<std::string>>();
    report.text = sent.at("text").get<std::string>();
    report.result = sent.at("result");
    for (const nlohmann::ordered_json& part : sent.at("parts")) report.parts.push_back(ReceivedReport(part));
    return report;
}

// Throws where a line does not hold what it should.
void ReadLine(const nlohmann::ordered_json& line, Received* received) {
    if (line.contains("temporary")) received->temporary.push_back(line.at("temporary").get<std::string>());
    if (line.contains("plugin")) received->usedPlugin = true;
    if (!line.contains("report")) return;
    received->report = ReceivedReport(line.at("report"));
    received->reported = true;
}

// A plug-in can write to the pipe, too: a line that is not as it should be says nothing.
Received ReadLines(const std::string& lines) {
    Received received;
    for (size_t start = 0, end; (end = lines.find('\n', start)) != std::string::npos; start = end + 1) {
        const auto line = nlohmann::ordered_json::parse(lines.substr(start, end - start), nullptr, false);
        if (!line.is_object()) continue;
        try {
            ReadLine(line, &received);
        } catch (const nlohmann::json::exception&) {
            continue;
        }
    }
    return received;
}

void Send(const nlohmann::ordered_json& line) {
    // Bytes that are no UTF-8 must not stop the command.
    const std::string text =
        line.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
    DWORD written = 0;
    WriteFile(shared.pipe, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}

// The whole path: the plug-in may have changed the current folder, which the parent does not follow.
void SendTemporary(const std::string& path) {
    wchar_t whole[32768];
    const DWORD length = GetFullPathNameW(Widen(path).c_str(), 32768, whole, nullptr);
    Send({{"temporary", length > 0 && length < 32768 ? Narrow(whole) : path}});
}

void TakePlacing() { WaitForSingleObject(shared.placing, INFINITE); }

HANDLE HandleFrom(const std::string& number) {
    const HANDLE handle =
        reinterpret_cast<HANDLE>(static_cast<uintptr_t>(std::strtoull(number.c_str(), nullptr, 10)));
    // A plug-in that starts a program must not hand it on: the pipe would stay open.
    SetHandleInformation(handle, HANDLE_FLAG_INHERIT, 0);
    return handle;
}

nlohmann::ordered_json SentReport(const Report& report) {
    auto parts = nlohmann::ordered_json::array();
    for (const Report& part : report.parts) parts.push_back(SentReport(part));
    return {{"exitCode", report.exitCode}, {"error", report.error},   {"notes", report.notes},
            {"text", report.text},         {"result", report.result}, {"parts", parts}};
}

}  // namespace

Report RunChildCommand() {
    OwnedHandle reading, job;
    PROCESS_INFORMATION process = {};
    job.handle = MakeJob();
    if (!job.handle || !MakeShared(&reading)) {
        return FailedReport(kExitEngine, "the command's process cannot be prepared: " +
                                             SystemErrorText(GetLastError()) + ".");
    }
    SetConsoleCtrlHandler(InterruptChild, TRUE);
    if (!StartChild(job.handle, &process)) {
        return FailedReport(
            kExitEngine, "the command's process cannot be started: " + SystemErrorText(GetLastError()) + ".");
    }
    CloseHandle(shared.pipe);
    const std::string lines = ReadToEnd(reading.handle);
    WaitForSingleObject(process.hProcess, INFINITE);
    DWORD code = 0;
    GetExitCodeProcess(process.hProcess, &code);
    // Who holds the mutex keeps the interrupt handler from using the handle.
    if (WaitForSingleObject(shared.placing, 0) != WAIT_TIMEOUT) {
        child = nullptr;
        CloseHandle(process.hProcess);
    }

    const Received received = ReadLines(lines);
    if (received.reported) return received.report;
    LeaveUnfinishedLine();
    for (const std::string& path : received.temporary) DeleteFileW(Widen(path).c_str());
    if (interrupted) return FailedReport(kExitInterrupted, "interrupted.");
    const char* const ended = received.usedPlugin ? "the plug-in has ended the command before it was done"
                                                  : "the command's process was ended before it was done";
    return FailedReport(kExitEngine, ended + (" (exit code " + CodeText(code) + ")."));
}

bool BecomeChild(std::vector<std::string>* arguments) {
    if (arguments->size() < 3 || arguments->front() != kChildOption) return false;
    shared.pipe = HandleFrom((*arguments)[1]);
    shared.placing = HandleFrom((*arguments)[2]);
    arguments->erase(arguments->begin(), arguments->begin() + 3);
    SetConsoleCtrlHandler(LeaveToParent, TRUE);
    SetUnhandledExceptionFilter(EndCrashed);
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
    WatchWriting({SendTemporary, TakePlacing});
    return true;
}

void TellOfPlugin() {
    if (shared.pipe) Send({{"plugin", true}});
}

void EndChild(const Report& report) {
    ClearProgressLine();
    Send({{"report", SentReport(report)}});
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(report.exitCode));
    std::abort();
}

}  // namespace kfx::driven
