// SPDX-License-Identifier: MIT
#include "commands/child_process.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <system_error>

#include <fcntl.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "commands/batch_options.h"
#include "commands/child_process_native.h"
#include "commands/host_session.h"

namespace kfx::commands {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kProgressStep{100};
constexpr char kThisProgram[] = "/proc/self/exe";

// The signal handler reads these at any moment. A place holds the number of a running child, or 0.
std::atomic<bool> hasChildren{false};
std::atomic<bool> interrupted{false};
std::atomic<pid_t> running[kMostJobs];

int parentPipe = -1;  // of a child; set once

std::atomic<pid_t>* FreePlace() {
    for (std::atomic<pid_t>& place : running) {
        pid_t none = 0;
        if (place.compare_exchange_strong(none, -1)) return &place;
    }
    return nullptr;
}

// -1: it cannot be started. It inherits `pipe`, which is closed in every other program that is started.
pid_t Start(const std::vector<std::string>& arguments, int pipe) {
    std::vector<std::string> words = {"kestrel", kChildOption, std::to_string(pipe)};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    if (posix_spawn_file_actions_init(&actions) != 0) return -1;
    pid_t process = -1;
    // A descriptor that becomes itself stays open.
    int failure = posix_spawn_file_actions_adddup2(&actions, pipe, pipe);
    if (failure == 0)
        failure = posix_spawn(&process, kThisProgram, &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    errno = failure;
    return failure == 0 ? process : -1;
}

void ReadLines(int pipe, ChildWords* words, const std::function<void(const StageProgress&)>& onProgress) {
    std::string text;
    char part[4096];
    for (;;) {
        const ssize_t count = read(pipe, part, sizeof part);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return;
        text.append(part, static_cast<size_t>(count));
        size_t start = 0;
        for (size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1)
            TakeChildLine(text.substr(start, end - start), words);
        text.erase(0, start);
        if (onProgress) onProgress(words->progress);
    }
}

// Waits for the child's end. Its number can be given to another process only after the place is free, so that
// an interrupt never reaches a stranger.
std::string WaitFor(pid_t process, std::atomic<pid_t>* place) {
    siginfo_t ended = {};
    while (waitid(P_PID, static_cast<id_t>(process), &ended, WEXITED | WNOWAIT) != 0 && errno == EINTR) {
    }
    *place = 0;
    int status = 0;
    while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFSIGNALED(status) ? "signal " + std::to_string(WTERMSIG(status))
                               : "exit code " + std::to_string(WEXITSTATUS(status));
}

void Send(const std::string& line) {
    size_t written = 0;
    while (written < line.size()) {
        const ssize_t count = write(parentPipe, line.data() + written, line.size() - written);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return;
        written += static_cast<size_t>(count);
    }
}

Report NotStarted(int reason) {
    return FailedReport(kExitEngine, "the file's process cannot be started (" +
                                         std::generic_category().message(reason) + ").");
}

}  // namespace

bool PrepareChildren(std::string*) {
    hasChildren = true;
    return true;
}

Report RunChild(const std::vector<std::string>& arguments,
                const std::function<void(const StageProgress&)>& onProgress) {
    int ends[2];
    std::atomic<pid_t>* const place = FreePlace();
    if (!place) return NotStarted(EAGAIN);
    if (pipe2(ends, O_CLOEXEC) != 0) {
        const int reason = errno;
        *place = 0;
        return NotStarted(reason);
    }
    const pid_t process = Start(arguments, ends[1]);
    const int reason = errno;
    close(ends[1]);
    if (process < 0) {
        close(ends[0]);
        *place = 0;
        return NotStarted(reason);
    }
    *place = process;
    // An interrupt between the start and the line above has missed it.
    if (interrupted) kill(process, SIGTERM);
    ChildWords words;
    ReadLines(ends[0], &words, onProgress);
    close(ends[0]);
    const std::string how = WaitFor(process, place);
    // A child that was killed could not do so.
    if (!words.reported)
        for (const std::string& path : words.temporary) unlink(path.c_str());
    // Ctrl+C reaches all processes of a terminal at once, and a child may have ended before this one knows.
    const bool endedByInterrupt = how == "exit code " + std::to_string(kExitInterrupted);
    return ReportOf(words, interrupted || endedByInterrupt, how);
}

bool WasInterrupted() { return interrupted; }

bool InterruptChildren() {
    if (!hasChildren) return false;
    interrupted = true;
    for (const std::atomic<pid_t>& place : running) {
        const pid_t process = place;
        if (process > 0) kill(process, SIGTERM);
    }
    return true;
}

bool IsChildProcess() { return parentPipe >= 0; }

bool BecomeChild(std::vector<std::string>* arguments) {
    if (arguments->size() < 2 || arguments->front() != kChildOption) return false;
    const std::string& number = (*arguments)[1];
    if (number.empty() || number.size() > 9 || number.find_first_not_of("0123456789") != std::string::npos)
        return false;
    parentPipe = std::atoi(number.c_str());
    fcntl(parentPipe, F_SETFD, FD_CLOEXEC);
    arguments->erase(arguments->begin(), arguments->begin() + 2);
    // A parent that is killed leaves nobody who wants the result.
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    return true;
}

void TellOfPlugin() {
    if (IsChildProcess()) Send(PluginLine());
}

void TellOfTemporary(const std::string& path) {
    if (IsChildProcess()) Send(TemporaryLine(path));
}

void TellOfProgress(const HostSession& session) {
    static Clock::time_point last;
    const Clock::time_point now = Clock::now();
    if (!IsChildProcess() || now - last < kProgressStep) return;
    last = now;
    Send(ProgressLine(ProgressOf(session)));
}

void EndChild(const Report& report) {
    Send(ReportLine(report));
    _exit(report.exitCode);
}

}  // namespace kfx::commands
