// SPDX-License-Identifier: MIT
#include "stage/child_command.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>

#include <windows.h>

#include "media/file_io.h"
#include "stage/text_windows.h"

namespace kfx::stage {
namespace {

// In front of the child's arguments, followed by its handles of the pipe and the mutex.
constexpr char kChildOption[] = "--child-of-stage";

// How long an interrupt waits for files that are being put in place.
constexpr DWORD kPlacingMilliseconds = 10000;

// What the parent and its child share. The child sends lines of JSON through the pipe: {"temporary": path}
// before it makes a file, {"report": ...} at its end. It takes the mutex before the first file gets its final
// name, and keeps it until it ends; who interrupts it takes it too, so that no half of a series appears.
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
    WaitForSingleObject(shared.placing, kPlacingMilliseconds);
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
        return L" " + std::to_wstring(reinterpret_cast<std::uintptr_t>(handle));
    };
    return L"\"" + program + L"\" " + Widen(kChildOption) + number(shared.pipe) + number(shared.placing) +
           WithoutProgram(GetCommandLineW());
}

// Makes the pipe and the mutex. The child inherits both; the parent keeps the reading end.
bool MakeShared(OwnedHandle* reading) {
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    shared.placing = CreateMutexW(&inherited, FALSE, nullptr);
    return shared.placing && CreatePipe(&reading->handle, &shared.pipe, &inherited, 0) &&
           SetHandleInformation(reading->handle, HANDLE_FLAG_INHERIT, 0);
}

// A job whose processes end with the last handle to it: a child does not outlive its parent.
HANDLE MakeJob() {
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    const HANDLE job = CreateJobObjectW(nullptr, nullptr);
    if (job) SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof limits);
    return job;
}

bool StartChild(HANDLE job, PROCESS_INFORMATION* process) {
    wchar_t program[32768];
    GetModuleFileNameW(nullptr, program, 32768);
    std::wstring commandLine = ChildCommandLine(program);
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    startup.hStdOutput = GetStdHandle(STD_OUTPUT_HANDLE);
    startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    if (!CreateProcessW(program, commandLine.data(), nullptr, nullptr, TRUE, CREATE_SUSPENDED, nullptr,
                        nullptr, &startup, process)) {
        return false;
    }
    if (job) AssignProcessToJobObject(job, process->hProcess);
    child = process->hProcess;
    if (interrupted) TerminateProcess(process->hProcess, kExitInterrupted);
    ResumeThread(process->hThread);
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

// Reads the child's lines. False: there is no report among them.
bool ReadLines(const std::string& lines, Report* report, std::vector<std::string>* temporary) {
    bool reported = false;
    for (size_t start = 0, end; (end = lines.find('\n', start)) != std::string::npos; start = end + 1) {
        const auto line = nlohmann::ordered_json::parse(lines.substr(start, end - start), nullptr, false);
        if (!line.is_object()) continue;
        if (line.contains("temporary")) temporary->push_back(line["temporary"].get<std::string>());
        if (!line.contains("report")) continue;
        const auto& sent = line["report"];
        report->exitCode = static_cast<ExitCode>(sent["exitCode"].get<int>());
        report->error = sent["error"].get<std::string>();
        report->notes = sent["notes"].get<std::vector<std::string>>();
        report->text = sent["text"].get<std::string>();
        report->result = sent["result"];
        reported = true;
    }
    return reported;
}

void Send(const nlohmann::ordered_json& line) {
    // Bytes that are no UTF-8 must not stop the command.
    const std::string text =
        line.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
    DWORD written = 0;
    WriteFile(shared.pipe, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}

void SendTemporary(const std::string& path) { Send({{"temporary", path}}); }

void TakePlacing() { WaitForSingleObject(shared.placing, INFINITE); }

HANDLE HandleFrom(const std::string& number) {
    const HANDLE handle =
        reinterpret_cast<HANDLE>(static_cast<std::uintptr_t>(std::strtoull(number.c_str(), nullptr, 10)));
    // A plug-in that starts a program must not hand it on: the pipe would stay open.
    SetHandleInformation(handle, HANDLE_FLAG_INHERIT, 0);
    return handle;
}

}  // namespace

Report RunChildCommand() {
    OwnedHandle reading, job;
    PROCESS_INFORMATION process = {};
    job.handle = MakeJob();
    if (!MakeShared(&reading)) {
        return FailedReport(kExitPlugin, "no pipe could be made: " + SystemErrorText(GetLastError()) + ".");
    }
    SetConsoleCtrlHandler(InterruptChild, TRUE);
    if (!StartChild(job.handle, &process)) {
        return FailedReport(
            kExitPlugin, "the command's process cannot be started: " + SystemErrorText(GetLastError()) + ".");
    }
    CloseHandle(shared.pipe);
    const std::string lines = ReadToEnd(reading.handle);
    WaitForSingleObject(process.hProcess, INFINITE);
    DWORD code = 0;
    GetExitCodeProcess(process.hProcess, &code);

    Report report;
    std::vector<std::string> temporary;
    if (ReadLines(lines, &report, &temporary)) return report;
    LeaveUnfinishedLine();
    for (const std::string& path : temporary) DeleteFileW(Widen(path).c_str());
    if (interrupted) return FailedReport(kExitInterrupted, "interrupted.");
    return FailedReport(kExitPlugin, "the plug-in has ended the command before it was done (exit code " +
                                         CodeText(code) + ").");
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

void EndChild(const Report& report) {
    ClearProgressLine();
    Send({{"report",
           {{"exitCode", report.exitCode},
            {"error", report.error},
            {"notes", report.notes},
            {"text", report.text},
            {"result", report.result}}}});
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(report.exitCode));
    std::abort();
}

}  // namespace kfx::stage
