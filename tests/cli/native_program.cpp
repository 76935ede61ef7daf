// SPDX-License-Identifier: MIT
#include "tests/cli/native_program.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>

#include <fcntl.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/cli/program.h"
#include "tests/cli/test_files.h"

namespace kfx::test {
namespace {

// What the program gets from its parent.
struct StartFiles {
    int output;
    int errors;
    int input;
};

pid_t Start(const std::vector<std::string>& arguments, const StartFiles& files, bool isTraced) {
    std::vector<std::string> words = {FileBesideTest("kestrel")};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    const pid_t process = fork();
    if (process != 0) return process;
    std::signal(SIGPIPE, SIG_DFL);
    std::signal(SIGXFSZ, SIG_DFL);
    if (dup2(files.input, STDIN_FILENO) < 0) _exit(98);
    if (dup2(files.output, STDOUT_FILENO) < 0 || dup2(files.errors, STDERR_FILENO) < 0) _exit(98);
    if (isTraced && ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(96);
    execv(pointers[0], pointers.data());
    _exit(97);
}

}  // namespace

pid_t StartKestrel(const std::vector<std::string>& arguments, int output, int errors, int input) {
    return Start(arguments, {.output = output, .errors = errors, .input = input}, false);
}

pid_t StartKestrelUntil(const std::string& path, const std::vector<std::string>& arguments, int errors) {
    return StartKestrelUntil([&] { return FileExists(path); }, arguments, errors);
}

pid_t StartKestrelUntil(const std::function<bool()>& isTime, const std::vector<std::string>& arguments,
                        int errors) {
    const pid_t process = Start(arguments, {.output = errors, .errors = errors, .input = STDIN_FILENO}, true);
    int status = 0;
    // It stops when it begins, then before and behind each of its system calls.
    while (process > 0 && waitpid(process, &status, 0) == process && WIFSTOPPED(status)) {
        if (isTime()) return process;
        if (ptrace(PTRACE_SYSCALL, process, nullptr, nullptr) == 0) continue;
        kill(process, SIGKILL);
        waitpid(process, &status, 0);
        break;
    }
    return -1;
}

void LetGo(pid_t process, int number) {
    // To its first thread, which is the one that was held.
    EXPECT_EQ(syscall(SYS_tgkill, process, process, number), 0);
    if (number == SIGKILL) return;  // ends it at once
    EXPECT_EQ(ptrace(PTRACE_DETACH, process, nullptr, nullptr), 0);
}

std::vector<pid_t> ChildrenOf(pid_t process) {
    std::vector<pid_t> children;
    for (const auto& task :
         std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/task")) {
        std::ifstream list(task.path() / "children");
        for (pid_t child; list >> child;) children.push_back(child);
    }
    return children;
}

int WaitForEnd(pid_t process) {
    int status = 0;
    EXPECT_EQ(waitpid(process, &status, 0), process);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

ProgramResult RunKestrel(const std::vector<std::string>& arguments, const std::string& inputPath) {
    const TemporaryFolder folder;
    const std::string outPath = folder.path + "out.txt", errPath = folder.path + "err.txt";
    const int out = open(outPath.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    const int err = open(errPath.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    const int in = inputPath.empty() ? STDIN_FILENO : open(inputPath.c_str(), O_RDONLY | O_CLOEXEC);
    const pid_t process = StartKestrel(arguments, out, err, in);
    if (!inputPath.empty()) close(in);
    EXPECT_GT(process, 0);
    close(out);
    close(err);
    ProgramResult result;
    if (process > 0) result.exitCode = WaitForEnd(process);
    result.out = ReadText(outPath);
    result.err = ReadText(errPath);
    return result;
}

}  // namespace kfx::test
