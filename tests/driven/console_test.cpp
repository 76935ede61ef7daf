// SPDX-License-Identifier: MIT
// kestrel.exe on a user's console.
#include <string>

#include <gtest/gtest.h>
#include <windows.h>

#include "commands/text_windows.h"
#include "tests/cli/running_program.h"
#include "tests/cli/test_files.h"
#include "tests/driven/own_console.h"

namespace kfx::test {
namespace {

using commands::Widen;

constexpr UINT kUsersCodePage = 437;

// A screen of the console's that programs write to and the test reads.
struct Screen {
    HANDLE handle = nullptr;

    Screen() {
        SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
        handle = CreateConsoleScreenBuffer(GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                           &inherited, CONSOLE_TEXTMODE_BUFFER, nullptr);
    }
    ~Screen() { CloseHandle(handle); }
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    std::wstring FirstLine() const {
        wchar_t text[80] = L"";
        DWORD count = 0;
        ReadConsoleOutputCharacterW(handle, text, 79, {0, 0}, &count);
        return {text, count};
    }
};

TEST(Console, Shows_every_letter_and_keeps_its_code_page) {
    ASSERT_TRUE(OpenOwnConsole());
    const Screen screen;
    ASSERT_NE(screen.handle, INVALID_HANDLE_VALUE);
    const UINT before = GetConsoleOutputCP();
    SetConsoleOutputCP(kUsersCodePage);
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    startup.hStdOutput = startup.hStdError = screen.handle;
    PROCESS_INFORMATION process = {};
    // Neither letter is in the console's code page.
    std::wstring line = L"\"" + Widen(FileBesideTest("kestrel.exe")) + L"\" info \u017e\u20ac.gif";
    ASSERT_TRUE(CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                               &process));
    CloseHandle(process.hThread);
    RunningProgram program = {process.hProcess, process.dwProcessId};
    EXPECT_EQ(WaitForEnd(&program), 3);
    EXPECT_NE(screen.FirstLine().find(L"\u017e\u20ac.gif"), std::wstring::npos)
        << commands::Narrow(screen.FirstLine());
    EXPECT_EQ(GetConsoleOutputCP(), kUsersCodePage);
    SetConsoleOutputCP(before);
}

}  // namespace
}  // namespace kfx::test
