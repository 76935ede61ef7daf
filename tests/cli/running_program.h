// SPDX-License-Identifier: MIT
// Programs that are started on Windows, for tests that look at them while they run.
#pragma once

#include <string>
#include <vector>

#include "tests/cli/program.h"

namespace kfx::test {

// As RunKestrel, with the program at `path`.
ProgramResult RunProgram(const std::string& path, const std::vector<std::string>& arguments,
                         const std::string& inputPath = "");

// A program that is still running.
struct RunningProgram {
    void* process = nullptr;
    unsigned long processId = 0;
};

// Starts the program at `path` without waiting. False: it did not start.
bool StartProgram(const std::string& path, const std::vector<std::string>& arguments,
                  RunningProgram* program);

// Starts kestrel.exe with --through-plugin.
bool StartThroughPlugin(std::vector<std::string> arguments, RunningProgram* program);

// Waits for its end, ends it when it hangs (which fails the test), and returns its exit code.
int WaitForEnd(RunningProgram* program);

// Ends one that still runs, so that it is not in the way of the next.
void EndProgram(RunningProgram* program);

}  // namespace kfx::test
