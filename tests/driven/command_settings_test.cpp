// SPDX-License-Identifier: MIT
// What stands for a driven plug-in's settings file: only who reads all of it in this process has taken it.
#include "driven/command_settings.h"

#include <gtest/gtest.h>

#include <aclapi.h>

#include "commands/text_windows.h"
#include "tests/cli/test_files.h"
#include "tests/support/wait_for.h"

namespace kfx::test {
namespace {

using commands::Widen;
using driven::CommandSettings;

const char kText[] = "[PlugIn]\r\nFastRemap = 1\r\n";

// Opens the file as soon as it is offered.
HANDLE Open(const CommandSettings& settings) {
    HANDLE file = INVALID_HANDLE_VALUE;
    EXPECT_TRUE(WaitFor([&] {
        file = CreateFileA(settings.path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
        return file != INVALID_HANDLE_VALUE;
    }));
    return file;
}

// All of it, in pieces of this size. What ends it is what the C library takes for the end of a file.
std::string ReadAll(HANDLE file, DWORD piece) {
    std::string text;
    char bytes[100];
    DWORD count = 0;
    while (ReadFile(file, bytes, piece, &count, nullptr)) text.append(bytes, count);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_BROKEN_PIPE});
    return text;
}

void ReadAndExpectTaken(const CommandSettings& settings) {
    const HANDLE file = Open(settings);
    EXPECT_EQ(ReadAll(file, 7), kText);
    EXPECT_TRUE(settings.taken) << "before the reader sees the end";
    CloseHandle(file);
}

TEST(CommandSettings, Are_taken_when_all_is_read) {
    const CommandSettings settings(kText);
    ASSERT_EQ(settings.error, "");
    ReadAndExpectTaken(settings);
}

TEST(CommandSettings, A_handle_that_is_closed_without_reading_takes_nothing) {
    const CommandSettings settings(kText);
    const HANDLE first = Open(settings);
    CloseHandle(first);
    const HANDLE second = Open(settings);
    EXPECT_FALSE(settings.taken);
    EXPECT_EQ(ReadAll(second, 100), kText);
    EXPECT_TRUE(settings.taken);
    CloseHandle(second);
}

TEST(CommandSettings, Another_process_takes_nothing) {
    const TemporaryFolder folder;
    const CommandSettings settings(kText);
    WriteText(folder.path + "read.bat",
              "@type \"" + settings.path + "\" > \"" + folder.path + "read.txt\"\r\n");
    std::wstring commandLine = Widen("cmd.exe /c " + folder.path + "read.bat");
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    ASSERT_TRUE(CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                               &startup, &process));
    EXPECT_EQ(WaitForSingleObject(process.hProcess, 120000), WAIT_OBJECT_0);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    EXPECT_FALSE(settings.taken);
    EXPECT_EQ(ReadText(folder.path + "read.txt"), "");
    ReadAndExpectTaken(settings);
}

TEST(CommandSettings, A_reader_that_never_reads_does_not_keep_the_scope) {
    HANDLE file = nullptr;
    {
        const CommandSettings settings(kText);
        file = Open(settings);
    }
    CloseHandle(file);
}

TEST(CommandSettings, Are_for_the_user_alone) {
    const CommandSettings settings(kText);
    ACL* list = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    ASSERT_EQ(GetSecurityInfo(settings.pipe, SE_KERNEL_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                              &list, nullptr, &descriptor),
              DWORD{ERROR_SUCCESS});
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(list->AceCount, 1);
    LocalFree(descriptor);
    const CommandSettings other(kText);
    EXPECT_NE(settings.path, other.path);
}

}  // namespace
}  // namespace kfx::test
