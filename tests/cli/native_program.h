// SPDX-License-Identifier: MIT
// A kestrel that is started natively, for tests that look at it while it runs.
#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

namespace kfx::test {

// Starts the kestrel beside this test with these files as its output, errors and input; they are the caller's
// to close. -1: it did not start.
pid_t StartKestrel(const std::vector<std::string>& arguments, int output, int errors, int input = 0);

// The processes that the threads of a program have started.
std::vector<pid_t> ChildrenOf(pid_t process);

// Waits for its end: the exit code, or minus the number of the signal that ended it.
int WaitForEnd(pid_t process);

}  // namespace kfx::test
