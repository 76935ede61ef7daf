// SPDX-License-Identifier: MIT
#include "tests/cli/native_program.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/cli/program.h"
#include "tests/cli/test_files.h"

namespace kfx::test {

pid_t StartKestrel(const std::vector<std::string>& arguments, int output, int errors, int input) {
    std::vector<std::string> words = {FileBesideTest("kestrel")};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    const pid_t process = fork();
    if (process != 0) return process;
    std::signal(SIGPIPE, SIG_DFL);
    if (dup2(input, STDIN_FILENO) < 0) _exit(98);
    if (dup2(output, STDOUT_FILENO) < 0 || dup2(errors, STDERR_FILENO) < 0) _exit(98);
    execv(pointers[0], pointers.data());
    _exit(97);
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
