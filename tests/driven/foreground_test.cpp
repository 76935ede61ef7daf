// SPDX-License-Identifier: MIT
// A command that drives the plug-in leaves the user alone: its window neither shows nor takes the keyboard.
#include <gtest/gtest.h>

#include <string>

#include <windows.h>

#include "tests/cli/running_program.h"
#include "tests/cli/test_animations.h"
#include "tests/cli/test_files.h"
#include "tests/support/wait_for.h"

namespace kfx::test {
namespace {

// A window of the user's, in the foreground.
struct UsersWindow {
    UsersWindow() {
        window = CreateWindowExA(0, "Static", "Terminal", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 300, 200,
                                 nullptr, nullptr, GetModuleHandleA(nullptr), nullptr);
        SetForegroundWindow(window);
    }
    ~UsersWindow() { DestroyWindow(window); }
    UsersWindow(const UsersWindow&) = delete;
    UsersWindow& operator=(const UsersWindow&) = delete;

    void AnswerMessages() const {
        MSG message;
        while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&message);
    }

    HWND window;
};

// What of a program's windows has been seen.
struct Seen {
    bool any = false;        // a dialog was open at all
    bool onScreen = false;   // where the user would have seen it
    std::string foreground;  // another window than the user's
};

std::string NameOf(HWND window) {
    char name[64] = "none", title[64] = "";
    if (window) GetClassNameA(window, name, sizeof name);
    if (window) GetWindowTextA(window, title, sizeof title);
    return std::string(name) + ": " + title;
}

BOOL CALLBACK LookAtWindow(HWND window, LPARAM pointer) {
    auto* seen = reinterpret_cast<Seen*>(pointer);
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    RECT place, screen;
    char name[32] = "";
    GetClassNameA(window, name, sizeof name);
    // A command works in a process of its own; the display has no other programs.
    if (process == GetCurrentProcessId() || lstrcmpA(name, "#32770") != 0 || !IsWindowVisible(window) ||
        !GetWindowRect(window, &place))
        return TRUE;
    seen->any = true;
    GetWindowRect(GetDesktopWindow(), &screen);
    RECT common;
    if (IntersectRect(&common, &place, &screen)) seen->onScreen = true;
    return TRUE;
}

TEST(DrivenWindow, Is_never_on_the_screen_and_never_in_the_foreground) {
    const TemporaryFolder folder;
    const std::string input = folder.path + "in.gif", output = folder.path + "out.webp";
    WriteTestGif(input, 12, false, 8);
    const UsersWindow users;
    ASSERT_TRUE(WaitFor([&users] {
        users.AnswerMessages();
        return GetForegroundWindow() == users.window;
    }));
    RunningProgram kestrel;
    ASSERT_TRUE(StartThroughPlugin({"apply", input, "-o", output, "--effect", "Oil Painting"}, &kestrel));
    Seen seen;
    EXPECT_TRUE(WaitFor([&] {
        users.AnswerMessages();
        EnumWindows(LookAtWindow, reinterpret_cast<LPARAM>(&seen));
        if (const HWND other = GetForegroundWindow(); other != users.window) seen.foreground = NameOf(other);
        return WaitForSingleObject(kestrel.process, 0) == WAIT_OBJECT_0;
    }));
    EXPECT_EQ(WaitForEnd(&kestrel), 0);
    EXPECT_TRUE(FileExists(output));
    EXPECT_TRUE(seen.any) << "nothing has been looked at";
    EXPECT_FALSE(seen.onScreen);
    EXPECT_EQ(seen.foreground, "");
}

}  // namespace
}  // namespace kfx::test
