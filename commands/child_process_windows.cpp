// SPDX-License-Identifier: MIT
#include "commands/child_process.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <mutex>

#include <windows.h>

#include "commands/host_session.h"
#include "commands/text_windows.h"
#include "media/file_io.h"

namespace kfx::commands {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kProgressStep{100};

// What the parent and a child share; its handles stand behind kChildOption. The child takes the mutex before
// its first file gets its final name, and keeps it until it ends; who interrupts it takes it too, so that no
// half of a series appears.
struct Shared {
    HANDLE pipe = nullptr;
    HANDLE placing = nullptr;
};

// Of a child. Set once, before anything runs that reads it.
Shared shared;

struct RunningChild {
    HANDLE process = nullptr;
    HANDLE placing = nullptr;
};

// The interrupt handler runs on a thread of its own, at any time. Under the lock no child is forgotten and no
// handle closed.
std::mutex runningLock;
std::vector<RunningChild> running;
std::atomic<bool> interrupted{false};

// A job whose processes end with the last handle to it, which nobody closes: a child does not outlive its
// parent.
HANDLE job = nullptr;

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

BOOL WINAPI InterruptChildren(DWORD) {
    {
        const std::lock_guard<std::mutex> lock(runningLock);
        interrupted = true;
        // Those that put their files in place end by themselves, however long it takes; the others at once.
        for (RunningChild& child : running) {
            if (WaitForSingleObject(child.placing, 0) == WAIT_TIMEOUT) continue;
            TerminateProcess(child.process, kExitInterrupted);
            child.process = nullptr;
        }
        for (const RunningChild& child : running) {
            if (!child.process) continue;
            WaitForSingleObject(child.placing, INFINITE);
            TerminateProcess(child.process, kExitInterrupted);
        }
    }
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

std::wstring ChildCommandLine(const std::wstring& program, const Shared& ends,
                              const std::vector<std::string>& arguments) {
    const auto number = [](HANDLE handle) {
        return L" " + std::to_wstring(reinterpret_cast<uintptr_t>(handle));
    };
    std::wstring line =
        L"\"" + program + L"\" " + Widen(kChildOption) + number(ends.pipe) + number(ends.placing);
    for (const std::string& argument : arguments) line += L" " + QuotedArgument(argument);
    return line;
}

// Makes the pipe and the mutex. The child inherits both; the parent keeps the reading end.
bool MakeShared(OwnedHandle* reading, OwnedHandle* writing, OwnedHandle* placing) {
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    placing->handle = CreateMutexW(&inherited, FALSE, nullptr);
    return placing->handle && CreatePipe(&reading->handle, &writing->handle, &inherited, 0) &&
           SetHandleInformation(reading->handle, HANDLE_FLAG_INHERIT, 0);
}

bool MakeJob() {
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    job = CreateJobObjectW(nullptr, nullptr);
    return job && SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof limits);
}

// Starts the child with the handles that it needs, and no other of this process's.
bool CreateChild(const wchar_t* program, std::wstring commandLine, const Shared& ends,
                 PROCESS_INFORMATION* process) {
    STARTUPINFOEXW startup = {};
    startup.StartupInfo.cb = sizeof startup;
    startup.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
    startup.StartupInfo.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    startup.StartupInfo.hStdOutput = GetStdHandle(STD_OUTPUT_HANDLE);
    startup.StartupInfo.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    // Each may stand in the list once, and only when it can be inherited.
    std::vector<HANDLE> handles = {ends.pipe, ends.placing};
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
    bool created = false;
    if (UpdateProcThreadAttribute(startup.lpAttributeList, 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST,
                                  handles.data(), handles.size() * sizeof(HANDLE), nullptr, nullptr)) {
        // On a loaded machine a process may end while the system still loads it. None of its code has run, so
        // another start repeats nothing.
        for (int attempt = 0; !created && attempt < 3; ++attempt) {
            created = CreateProcessW(program, commandLine.data(), nullptr, nullptr, TRUE,
                                     CREATE_SUSPENDED | EXTENDED_STARTUPINFO_PRESENT, nullptr, nullptr,
                                     &startup.StartupInfo, process);
            if (!created && GetLastError() != ERROR_INTERNAL_ERROR) break;
        }
    }
    DeleteProcThreadAttributeList(startup.lpAttributeList);
    return created;
}

// The child stands in `running` then. False: GetLastError() says why.
bool StartChild(const std::vector<std::string>& arguments, const Shared& ends, PROCESS_INFORMATION* process) {
    std::wstring program(32768, L'\0');
    const DWORD length = GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size()));
    if (length == 0 || length == program.size()) return false;
    program.resize(length);
    const std::lock_guard<std::mutex> lock(runningLock);
    if (!CreateChild(program.c_str(), ChildCommandLine(program, ends, arguments), ends, process))
        return false;
    if (!AssignProcessToJobObject(job, process->hProcess)) {
        const DWORD error = GetLastError();
        TerminateProcess(process->hProcess, kExitEngine);
        CloseHandle(process->hThread);
        CloseHandle(process->hProcess);
        SetLastError(error);
        return false;
    }
    running.push_back({process->hProcess, ends.placing});
    if (interrupted) TerminateProcess(process->hProcess, kExitInterrupted);
    ResumeThread(process->hThread);
    CloseHandle(process->hThread);
    return true;
}

void ForgetChild(HANDLE placing) {
    const std::lock_guard<std::mutex> lock(runningLock);
    running.erase(std::remove_if(running.begin(), running.end(),
                                 [&](const RunningChild& child) { return child.placing == placing; }),
                  running.end());
}

// Up to the end of all that the child sends.
void ReadLines(HANDLE pipe, ChildWords* words, const std::function<void(const StageProgress&)>& onProgress) {
    std::string text;
    char part[4096];
    DWORD count = 0;
    while (ReadFile(pipe, part, sizeof part, &count, nullptr) && count > 0) {
        text.append(part, count);
        size_t start = 0;
        for (size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1)
            TakeChildLine(text.substr(start, end - start), words);
        text.erase(0, start);
        if (onProgress) onProgress(words->progress);
    }
}

std::string CodeText(DWORD code) {
    if (code < 256) return std::to_string(code);
    char text[16];
    wsprintfA(text, "0x%08lX", code);
    return text;
}

void Send(const std::string& line) {
    DWORD written = 0;
    WriteFile(shared.pipe, line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
}

Report NotStarted() {
    return FailedReport(kExitEngine,
                        "the command's process cannot be started: " + SystemErrorText(GetLastError()) + ".");
}

void TakePlacing() { WaitForSingleObject(shared.placing, INFINITE); }

HANDLE HandleFrom(const std::string& number) {
    const HANDLE handle =
        reinterpret_cast<HANDLE>(static_cast<uintptr_t>(std::strtoull(number.c_str(), nullptr, 10)));
    // A plug-in that starts a program must not hand it on: the pipe would stay open.
    SetHandleInformation(handle, HANDLE_FLAG_INHERIT, 0);
    return handle;
}

}  // namespace

bool PrepareChildren(std::string* error) {
    if (job) return true;
    if (!MakeJob()) {
        *error = "the command's process cannot be prepared: " + SystemErrorText(GetLastError()) + ".";
        return false;
    }
    // One more way to the user's settings, which no command needs.
    SetEnvironmentVariableW(L"APPDATA", nullptr);
    SetConsoleCtrlHandler(InterruptChildren, TRUE);
    return true;
}

Report RunChild(const std::vector<std::string>& arguments,
                const std::function<void(const StageProgress&)>& onProgress) {
    OwnedHandle reading, writing, placing;
    PROCESS_INFORMATION process = {};
    if (!MakeShared(&reading, &writing, &placing) ||
        !StartChild(arguments, {writing.handle, placing.handle}, &process)) {
        return NotStarted();
    }
    writing.Close();
    ChildWords words;
    ReadLines(reading.handle, &words, onProgress);
    WaitForSingleObject(process.hProcess, INFINITE);
    DWORD code = 0;
    GetExitCodeProcess(process.hProcess, &code);
    // The interrupt may come before the child's own answer to it is set up; the system then ends it.
    if (code == STATUS_CONTROL_C_EXIT) interrupted = true;
    ForgetChild(placing.handle);
    CloseHandle(process.hProcess);
    if (!words.reported)
        for (const std::string& path : words.temporary) DeleteFileW(Widen(path).c_str());
    return ReportOf(words, interrupted, "exit code " + CodeText(code));
}

bool WasInterrupted() { return interrupted; }

bool BecomeChild(std::vector<std::string>* arguments) {
    if (arguments->size() < 3 || arguments->front() != kChildOption) return false;
    shared.pipe = HandleFrom((*arguments)[1]);
    shared.placing = HandleFrom((*arguments)[2]);
    arguments->erase(arguments->begin(), arguments->begin() + 3);
    SetConsoleCtrlHandler(LeaveToParent, TRUE);
    SetUnhandledExceptionFilter(EndCrashed);
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
    WatchWriting({TellOfTemporary, TakePlacing});
    return true;
}

void TellOfPlugin() {
    if (shared.pipe) Send(PluginLine());
}

// The whole path: the plug-in may have changed the current folder, which the parent does not follow.
void TellOfTemporary(const std::string& path) {
    if (shared.pipe) Send(TemporaryLine(AbsolutePath(path)));
}

void TellOfProgress(const HostSession& session) {
    static Clock::time_point last;
    const Clock::time_point now = Clock::now();
    if (!shared.pipe || now - last < kProgressStep) return;
    last = now;
    Send(ProgressLine(ProgressOf(session)));
}

void EndChild(const Report& report) {
    Send(ReportLine(report));
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(report.exitCode));
    std::abort();
}

}  // namespace kfx::commands
