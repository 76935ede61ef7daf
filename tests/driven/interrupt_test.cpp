// SPDX-License-Identifier: MIT
// Ctrl+C, as the console sends it to every program on it.
#include <gtest/gtest.h>

#include <algorithm>

#include <windows.h>
#include <tlhelp32.h>

#include "tests/cli/running_program.h"
#include "tests/cli/test_animations.h"
#include "tests/cli/test_files.h"
#include "tests/driven/own_console.h"
#include "tests/driven/user_settings.h"
#include "tests/support/wait_for.h"

namespace kfx::test {
namespace {

int CountParts(const std::string& folder) {
    const auto files = FilesIn(folder);
    return static_cast<int>(std::count_if(files.begin(), files.end(), [](const std::string& name) {
        return name.find(".kestrel-part") != std::string::npos;
    }));
}

DWORD ThreadsOf(DWORD processId) {
    DWORD threads = 0;
    const HANDLE processes = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    PROCESSENTRY32W entry = {};
    entry.dwSize = sizeof entry;
    for (BOOL more = Process32FirstW(processes, &entry); more; more = Process32NextW(processes, &entry)) {
        if (entry.th32ProcessID == processId) threads = entry.cntThreads;
    }
    CloseHandle(processes);
    return threads;
}

// kestrel.exe with a plug-in that lets it go no further than a known point in writing four pictures.
struct Interrupt : ::testing::Test {
    const UserSettings user;
    const TemporaryFolder folder;
    const HANDLE started = CreateEventA(nullptr, TRUE, FALSE, "KfxMisbehavingStarted");
    const HANDLE go = CreateEventA(nullptr, TRUE, FALSE, "KfxMisbehavingGo");
    RunningProgram program;

    void SetUp() override {
        ResetEvent(started);
        ResetEvent(go);
        WriteTestGif(folder.path + "in.gif", 4);
        ASSERT_TRUE(OpenOwnConsole());
    }

    void TearDown() override {
        CloseHandle(started);
        CloseHandle(go);
    }

    // Returns when the program stands still.
    void StartUntil(const std::string& misbehaviour, const std::vector<std::string>& more = {}) {
        _putenv(("KFX_MISBEHAVIOUR=" + misbehaviour).c_str());
        std::vector<std::string> words = {"apply",    folder.path + "in.gif",
                                          "--effect", "Bump",
                                          "--plugin", FileBesideTest("misbehaving_plugin.dll")};
        words.insert(words.end(), more.begin(), more.end());
        if (more.empty()) words.insert(words.end(), {"-o", folder.path + "out.png"});
        ASSERT_TRUE(StartThroughPlugin(words, &program));
        EXPECT_EQ(WaitForSingleObject(started, 120000), WAIT_OBJECT_0);
    }
};

TEST_F(Interrupt, Leaves_nothing_of_a_series_of_pictures) {
    StartUntil("writing");
    EXPECT_EQ(FilesIn(folder.path), (std::vector<std::string>{"in.gif", "out-000.png.kestrel-part"}));
    EXPECT_TRUE(GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0));
    EXPECT_EQ(WaitForEnd(&program), 130);
    EXPECT_EQ(FilesIn(folder.path), std::vector<std::string>{"in.gif"});
}

TEST_F(Interrupt, Leaves_nothing_of_a_file_of_a_batch) {
    WriteTestGif(folder.path + "more.gif", 1);
    const std::string out = folder.path + "out/";
    StartUntil("writing", {folder.path + "more.gif", "-o", out, "--format", "png", "--jobs", "1"});
    EXPECT_EQ(FilesIn(out), std::vector<std::string>{"in-000.png.kestrel-part"});
    EXPECT_TRUE(GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0));
    EXPECT_EQ(WaitForEnd(&program), 130);
    EXPECT_EQ(FilesIn(out), std::vector<std::string>{});
}

TEST_F(Interrupt, Leaves_a_whole_series_when_files_are_being_placed) {
    StartUntil("placing");
    EXPECT_TRUE(FileExists(folder.path + "out-000.png"));
    EXPECT_EQ(CountParts(folder.path), 3);
    const DWORD threads = ThreadsOf(program.processId);
    EXPECT_TRUE(GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0));
    // The interrupt is handled on a thread of its own.
    EXPECT_TRUE(WaitFor([&] { return ThreadsOf(program.processId) != threads; }));
    SetEvent(go);
    EXPECT_EQ(WaitForEnd(&program), 0);
    EXPECT_EQ(FilesIn(folder.path), (std::vector<std::string>{"in.gif", "out-000.png", "out-001.png",
                                                              "out-002.png", "out-003.png"}));
}

}  // namespace
}  // namespace kfx::test
