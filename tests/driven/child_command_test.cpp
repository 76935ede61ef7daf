// SPDX-License-Identifier: MIT
// The process that does a command's work: what it is told, what it inherits, and what it tells.
#include "commands/child_process.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include <windows.h>

#include "commands/text_windows.h"
#include "media/file_io.h"
#include "tests/cli/program.h"
#include "tests/cli/running_program.h"
#include "tests/cli/test_animations.h"
#include "tests/cli/test_files.h"
#include "tests/driven/user_settings.h"

namespace kfx::test {
namespace {

using commands::Narrow;
using commands::Widen;
using ::testing::HasSubstr;

struct ChildCommand : ::testing::Test {
    UserSettings user;
    TemporaryFolder folder;
    std::string input = folder.path + "in.gif";

    void SetUp() override { WriteTestGif(input, 1); }
};

// Runs a program by the command line as it stands; its exit code.
DWORD RunLine(std::wstring line, const std::string& currentFolder, BOOL inherit = FALSE) {
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    EXPECT_TRUE(CreateProcessW(nullptr, line.data(), nullptr, nullptr, inherit, 0, nullptr,
                               Widen(currentFolder).c_str(), &startup, &process));
    RunningProgram program = {process.hProcess, process.dwProcessId};
    CloseHandle(process.hThread);
    return static_cast<DWORD>(WaitForEnd(&program));
}

bool FolderExists(const std::string& path) {
    return GetFileAttributesW(Widen(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::wstring QuotedProgram() { return L"\"" + Widen(FileBesideTest("kestrel.exe")) + L"\""; }

TEST_F(ChildCommand, It_gets_every_argument_as_it_was_written) {
    for (const std::string effect : {"two words", "a \"quoted\" word", "ends in \\", "\\\"", "a\tb", "%PATH%",
                                     "\xC3\xA9t\xC3\xA9", "--child-of-kestrel"}) {
        const ProgramResult result =
            RunKestrel({"apply", input, "-o", folder.path + "out.gif", "--effect=" + effect});
        EXPECT_EQ(result.exitCode, 2) << effect;
        EXPECT_THAT(result.err, HasSubstr("unknown effect \"" + effect + "\"")) << effect;
    }
}

TEST_F(ChildCommand, The_programs_own_name_may_be_quoted_or_not) {
    const std::wstring arguments = L" apply in.gif -o out.gif --effect Bump";
    EXPECT_EQ(RunLine(QuotedProgram() + arguments, folder.path), 0u);
    EXPECT_TRUE(FileExists(folder.path + "out.gif"));
    DeleteFileAt(folder.path + "out.gif");
    EXPECT_EQ(RunLine(Widen(FileBesideTest("kestrel.exe")) + arguments, folder.path), 0u);
    EXPECT_TRUE(FileExists(folder.path + "out.gif"));

    WriteText(folder.path + "kest rel.exe", ReadText(FileBesideTest("kestrel.exe")));
    EXPECT_EQ(RunLine(L"\"" + Widen(folder.path) + L"kest rel.exe\" apply in.gif -o spaced.gif --effect Bump",
                      folder.path),
              0u);
    EXPECT_TRUE(FileExists(folder.path + "spaced.gif"));
}

TEST_F(ChildCommand, It_inherits_no_handle_that_it_does_not_need) {
    SECURITY_ATTRIBUTES inheritable = {sizeof inheritable, nullptr, TRUE};
    HANDLE reading = nullptr, writing = nullptr;
    ASSERT_TRUE(CreatePipe(&reading, &writing, &inheritable, 0));
    _putenv("KFX_MISBEHAVIOUR=handle");
    _putenv(("KFX_HANDLE=" + std::to_string(reinterpret_cast<uintptr_t>(writing))).c_str());
    const std::wstring plugin = Widen(FileBesideTest("misbehaving_plugin.dll"));
    EXPECT_EQ(
        RunLine(QuotedProgram() + L" apply in.gif -o out.gif --effect Bump --through-plugin --plugin \"" +
                    plugin + L"\"",
                folder.path, TRUE),
        5u);
    _putenv("KFX_HANDLE=");
    DWORD arrived = 0;
    EXPECT_TRUE(PeekNamedPipe(reading, nullptr, 0, nullptr, &arrived, nullptr));
    EXPECT_EQ(arrived, 0u) << "the plug-in has written to a handle of the program that started kestrel";
    CloseHandle(reading);
    CloseHandle(writing);
}

TEST_F(ChildCommand, A_relative_output_stays_where_the_command_was_started) {
    _putenv("KFX_MISBEHAVIOUR=elsewhere");
    const std::wstring plugin = Widen(FileBesideTest("misbehaving_plugin.dll"));
    EXPECT_EQ(RunLine(QuotedProgram() +
                          L" apply in.gif -o elsewhere.gif --effect Bump --through-plugin --plugin \"" +
                          plugin + L"\"",
                      folder.path),
              0u);
    EXPECT_TRUE(FileExists(folder.path + "elsewhere.gif"));
    EXPECT_FALSE(FileExists("C:\\windows\\elsewhere.gif"));
    DeleteFileAt("C:\\windows\\elsewhere.gif");
}

// The other end of this test's process, when that takes itself for a child.
struct ParentEnd {
    HANDLE reading = nullptr;
    HANDLE writing = nullptr;
    HANDLE placing = CreateMutexW(nullptr, FALSE, nullptr);

    ParentEnd() {
        CreatePipe(&reading, &writing, nullptr, 0);
        const auto number = [](HANDLE handle) { return std::to_string(reinterpret_cast<uintptr_t>(handle)); };
        std::vector<std::string> arguments = {"--child-of-kestrel", number(writing), number(placing),
                                              "apply"};
        EXPECT_TRUE(commands::BecomeChild(&arguments));
        EXPECT_EQ(arguments, std::vector<std::string>{"apply"});
    }
    ~ParentEnd() {
        WatchWriting({});
        SetUnhandledExceptionFilter(nullptr);
        ReleaseMutex(placing);
        for (const HANDLE handle : {reading, writing, placing}) CloseHandle(handle);
    }
    ParentEnd(const ParentEnd&) = delete;
    ParentEnd& operator=(const ParentEnd&) = delete;

    std::string Received() const {
        char text[4096];
        DWORD count = 0, waiting = 0;
        if (PeekNamedPipe(reading, nullptr, 0, nullptr, &waiting, nullptr) && waiting > 0)
            ReadFile(reading, text, sizeof text, &count, nullptr);
        return {text, count};
    }
};

TEST_F(ChildCommand, It_tells_the_whole_path_of_an_unfinished_file) {
    wchar_t before[MAX_PATH];
    GetCurrentDirectoryW(MAX_PATH, before);
    ASSERT_TRUE(SetCurrentDirectoryW(Widen(folder.path).c_str()));
    const ParentEnd parent;
    std::string error;
    EXPECT_TRUE(WriteWholeFile("relative.gif", {1, 2, 3}, &error)) << error;
    SetCurrentDirectoryW(before);
    const auto line = nlohmann::json::parse(parent.Received(), nullptr, false);
    ASSERT_TRUE(line.is_object() && line.contains("temporary"));
    EXPECT_EQ(line["temporary"], folder.path + "relative.gif.kestrel-part");
    // Once files get their final names an interrupt has to wait.
    DWORD answer = WAIT_OBJECT_0;
    std::thread([&] { answer = WaitForSingleObject(parent.placing, 0); }).join();
    EXPECT_EQ(answer, DWORD{WAIT_TIMEOUT});
}

// What the program does when nobody reads what it prints.
TEST_F(ChildCommand, A_reader_that_goes_away_neither_ends_nor_holds_up_the_program) {
    SECURITY_ATTRIBUTES inheritable = {sizeof inheritable, nullptr, TRUE};
    HANDLE reading = nullptr, writing = nullptr;
    ASSERT_TRUE(CreatePipe(&reading, &writing, &inheritable, 0));
    CloseHandle(reading);
    std::wstring line = QuotedProgram() + L" effects --json";
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = startup.hStdError = writing;
    PROCESS_INFORMATION process = {};
    ASSERT_TRUE(CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                               &process));
    RunningProgram program = {process.hProcess, process.dwProcessId};
    CloseHandle(process.hThread);
    EXPECT_EQ(WaitForEnd(&program), 0);
    CloseHandle(writing);
}

TEST_F(ChildCommand, A_child_that_the_system_ends_for_Ctrl_C_was_interrupted) {
    _putenv("KFX_MISBEHAVIOUR=Ctrl+C");
    const ProgramResult result =
        RunThroughPlugin({"apply", input, "-o", folder.path + "out.gif", "--effect", "Bump", "--plugin",
                          FileBesideTest("misbehaving_plugin.dll")});
    _putenv("KFX_MISBEHAVIOUR=");
    EXPECT_EQ(result.exitCode, 130);
    EXPECT_THAT(result.err, HasSubstr("interrupted."));
}

TEST_F(ChildCommand, No_library_is_taken_from_the_current_folder) {
    WriteText(folder.path + "stranger.dll", ReadText(FileBesideTest("misbehaving_plugin.dll")));
    _putenv("KFX_MISBEHAVIOUR=library");
    RunLine(QuotedProgram() + L" apply in.gif -o out.gif --effect Bump --through-plugin --plugin \"" +
                Widen(FileBesideTest("misbehaving_plugin.dll")) + L"\"",
            folder.path);
    _putenv("KFX_MISBEHAVIOUR=");
    EXPECT_FALSE(FolderExists(folder.path + "stranger was loaded"));
}

}  // namespace
}  // namespace kfx::test
