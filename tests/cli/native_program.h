// SPDX-License-Identifier: MIT
// A kestrel that is started natively, for tests that look at it while it runs.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace kfx::test {

// Starts the kestrel beside this test with these files as its output, errors and input; they are the caller's
// to close. -1: it did not start.
pid_t StartKestrel(const std::vector<std::string>& arguments, int output, int errors, int input = 0);

// Starts it, too, with its output among the errors, and returns when it has made the file `path`. It stands
// still then, until LetGo. -1: it has ended without the file, or could not be held.
pid_t StartKestrelUntil(const std::string& path, const std::vector<std::string>& arguments, int errors);

// The same, when `isTime` says so. It is asked when the program begins, and before and behind each system
// call of its first thread.
pid_t StartKestrelUntil(const std::function<bool()>& isTime, const std::vector<std::string>& arguments,
                        int errors);

// Sends a signal to a program that stands still, which is the first thing that it gets when it goes on.
void LetGo(pid_t process, int number);

// The processes that the threads of a program have started.
std::vector<pid_t> ChildrenOf(pid_t process);

// Waits for its end: the exit code, or minus the number of the signal that ended it.
int WaitForEnd(pid_t process);

}  // namespace kfx::test
