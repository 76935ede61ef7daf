// SPDX-License-Identifier: MIT
// Ctrl+C, as the console sends it to every program on it.
#include <gtest/gtest.h>

#include <algorithm>

#include <windows.h>

#include "tests/stage/stage_process.h"
#include "tests/stage/test_animations.h"

namespace kfx::test {
namespace {

BOOL WINAPI Ignore(DWORD) { return TRUE; }

// Gives the test a console of its own, whose interrupts the test itself ignores. It stays until the program
// ends: giving it up would close the files that the test reports to.
bool OpenOwnConsole() {
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE), error = GetStdHandle(STD_ERROR_HANDLE);
    FreeConsole();
    const bool open = AllocConsole() && SetConsoleCtrlHandler(Ignore, TRUE);
    SetStdHandle(STD_OUTPUT_HANDLE, output);
    SetStdHandle(STD_ERROR_HANDLE, error);
    return open;
}

bool IsPart(const std::string& name) { return name.find(".part") != std::string::npos; }

TEST(Interrupt, LeavesNothingOfASeriesOfPictures) {
    const TemporaryFolder folder;
    // Many large pictures, so that writing them takes longer than noticing that it has begun.
    WriteTestGif(folder.path + "in.gif", 150, false, 16);
    ASSERT_TRUE(OpenOwnConsole());
    RunningStage stage;
    ASSERT_TRUE(StartStage(
        {"apply", folder.path + "in.gif", "-o", folder.path + "out.png", "--effect", "Bump"}, &stage));
    bool writing = false, ended = false;
    while (!writing && !ended) {
        ended = WaitForSingleObject(stage.process, 1) == WAIT_OBJECT_0;
        const auto files = FilesIn(folder.path);
        writing = std::count_if(files.begin(), files.end(), IsPart) > 1;
    }
    ASSERT_TRUE(writing) << "the command has ended early";
    ASSERT_TRUE(GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0));
    EXPECT_EQ(WaitForStage(&stage), 130);
    EXPECT_EQ(FilesIn(folder.path), std::vector<std::string>{"in.gif"});
}

}  // namespace
}  // namespace kfx::test
