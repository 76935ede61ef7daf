// SPDX-License-Identifier: MIT
// Stage's own window, used as a user would: by its buttons, and the plug-in's.
#include <gtest/gtest.h>

#include <windows.h>

#include "stage/stage_resources.h"
#include "tests/cli/running_program.h"
#include "tests/cli/test_animations.h"
#include "tests/cli/test_files.h"
#include "tests/driven/user_settings.h"
#include "tests/support/wait_for.h"

namespace kfx::test {
namespace {

constexpr int kBuild = 1;
constexpr int kSizeField = 12;
constexpr UINT kAnswerMilliseconds = 10000;  // until the text is asked for once more

std::string TextOf(HWND window) {
    char text[300] = "";
    SendMessageTimeoutA(window, WM_GETTEXT, sizeof text, reinterpret_cast<LPARAM>(text), SMTO_NORMAL,
                        kAnswerMilliseconds, nullptr);
    return text;
}

void Press(HWND window, int button) {
    PostMessageA(window, WM_COMMAND, MAKEWPARAM(button, BN_CLICKED),
                 reinterpret_cast<LPARAM>(GetDlgItem(window, button)));
}

// A visible dialog of the process with this title.
HWND DialogOf(DWORD process, const char* title) {
    for (HWND dialog = nullptr; (dialog = FindWindowExA(nullptr, dialog, "#32770", title)) != nullptr;) {
        DWORD owner = 0;
        GetWindowThreadProcessId(dialog, &owner);
        if (owner == process && IsWindowVisible(dialog)) return dialog;
    }
    return nullptr;
}

struct StageWindow : ::testing::Test {
    UserSettings user;
    TemporaryFolder folder;
    std::string input = folder.path + "in.gif";
    RunningProgram stage;
    HWND window = nullptr;

    void SetUp() override { WriteTestGif(input, 3); }
    void TearDown() override { EndProgram(&stage); }

    void Open(const std::string& file, const std::string& program = FileBesideTest("kestrel-stage.exe")) {
        ASSERT_TRUE(StartProgram(program, {file}, &stage));
        ASSERT_TRUE(WaitFor([this] { return (window = FindWindowA("KestrelStage", nullptr)) != nullptr; }));
    }

    bool WaitForTitle(const std::string& title) const {
        return WaitFor([&] { return TextOf(window) == title; });
    }

    void WaitForDialog(const char* title, HWND* dialog) const {
        ASSERT_TRUE(WaitFor([&] { return (*dialog = DialogOf(stage.processId, title)) != nullptr; }))
            << title;
    }

    // Presses a button of a message box with Stage's title.
    void AnswerMessage(int button) const {
        HWND box = nullptr;
        ASSERT_NO_FATAL_FAILURE(WaitForDialog("Kestrel Stage", &box));
        PostMessageA(box, WM_COMMAND, static_cast<WPARAM>(button), 0);
        ASSERT_TRUE(WaitFor([&] { return DialogOf(stage.processId, "Kestrel Stage") == nullptr; }));
    }

    void ExpectEnd() { EXPECT_EQ(WaitForEnd(&stage), 0); }
};

TEST_F(StageWindow, The_source_goes_through_the_plugin_and_the_result_waits_to_be_saved) {
    ASSERT_NO_FATAL_FAILURE(Open(input));
    ASSERT_TRUE(WaitForTitle("in.gif - Kestrel Stage"));
    EXPECT_FALSE(IsWindowEnabled(GetDlgItem(window, IDC_SAVE)));

    Press(window, IDC_EFFECTS);
    HWND plugin = nullptr;
    ASSERT_NO_FATAL_FAILURE(WaitForDialog("Kestrel FX #1", &plugin));
    EXPECT_TRUE(WaitFor([this] { return !IsWindowEnabled(window); })) << "the plug-in's window is modal";
    EXPECT_TRUE(WaitFor([plugin] { return TextOf(GetDlgItem(plugin, kSizeField)) == "40 x 30"; }))
        << "Stage's source is opened without asking";
    Press(plugin, kBuild);
    EXPECT_TRUE(WaitFor([this] { return IsWindowEnabled(GetDlgItem(window, IDC_SAVE)) != 0; }));

    PostMessageA(window, WM_CLOSE, 0, 0);
    ASSERT_NO_FATAL_FAILURE(AnswerMessage(IDNO));
    ExpectEnd();
}

TEST_F(StageWindow, A_file_that_cannot_be_read_is_reported_and_the_window_stays) {
    ASSERT_NO_FATAL_FAILURE(Open(folder.path + "no.gif"));
    ASSERT_NO_FATAL_FAILURE(AnswerMessage(IDOK));
    EXPECT_TRUE(WaitForTitle("Kestrel Stage"));
    PostMessageA(window, WM_CLOSE, 0, 0);
    ExpectEnd();
}

TEST_F(StageWindow, A_missing_plugin_is_reported) {
    // The plug-in is looked for beside the program.
    const std::string alone = folder.path + "kestrel-stage.exe";
    WriteText(alone, ReadText(FileBesideTest("kestrel-stage.exe")));
    ASSERT_NO_FATAL_FAILURE(Open(input, alone));
    Press(window, IDC_EFFECTS);
    ASSERT_NO_FATAL_FAILURE(AnswerMessage(IDOK));
    PostMessageA(window, WM_CLOSE, 0, 0);
    ExpectEnd();
}

}  // namespace
}  // namespace kfx::test
