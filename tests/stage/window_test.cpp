// SPDX-License-Identifier: MIT
// Stage's own window, used as a user would: by its buttons, and the plug-in's.
#include <gtest/gtest.h>

#include <functional>

#include <windows.h>

#include "stage/stage_resources.h"
#include "tests/stage/stage_process.h"
#include "tests/stage/test_animations.h"

namespace kfx::test {
namespace {

constexpr int kBuild = 1;
constexpr int kSizeField = 12;

bool Await(const std::function<bool()>& condition) {
    for (int tries = 0; tries < 3000; ++tries) {
        if (condition()) return true;
        Sleep(10);
    }
    return false;
}

std::string TextOf(HWND window) {
    char text[300] = "";
    SendMessageTimeoutA(window, WM_GETTEXT, sizeof text, reinterpret_cast<LPARAM>(text), SMTO_NORMAL, 5000,
                        nullptr);
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
    RunningStage stage;
    HWND window = nullptr;

    void SetUp() override { WriteTestGif(input, 3); }

    void Open(const std::vector<std::string>& arguments) {
        ASSERT_TRUE(StartStage(arguments, &stage));
        ASSERT_TRUE(Await([this] { return (window = FindWindowA("KestrelStage", nullptr)) != nullptr; }));
    }

    HWND AwaitDialog(const char* title) const {
        HWND dialog = nullptr;
        EXPECT_TRUE(Await([&] { return (dialog = DialogOf(stage.processId, title)) != nullptr; })) << title;
        return dialog;
    }

    void ExpectEnd() { EXPECT_EQ(WaitForStage(&stage), 0); }
};

TEST_F(StageWindow, TheSourceGoesThroughThePluginAndTheResultWaitsToBeSaved) {
    ASSERT_NO_FATAL_FAILURE(Open({"window", input}));
    ASSERT_TRUE(Await([this] { return TextOf(window) == "in.gif - Kestrel Stage"; }));
    EXPECT_FALSE(IsWindowEnabled(GetDlgItem(window, IDC_SAVE)));

    Press(window, IDC_EFFECTS);
    const HWND plugin = AwaitDialog("Kestrel FX #1");
    EXPECT_FALSE(IsWindowEnabled(window)) << "the plug-in's window is modal";
    EXPECT_TRUE(Await([plugin] { return TextOf(GetDlgItem(plugin, kSizeField)) == "40 x 30"; }))
        << "Stage's source is opened without asking";
    Press(plugin, kBuild);
    EXPECT_TRUE(Await([this] { return IsWindowEnabled(GetDlgItem(window, IDC_SAVE)) != 0; }));

    PostMessageA(window, WM_CLOSE, 0, 0);
    PostMessageA(AwaitDialog("Kestrel Stage"), WM_COMMAND, IDNO, 0);
    ExpectEnd();
}

TEST_F(StageWindow, AFileThatCannotBeReadIsReportedAndTheWindowStays) {
    ASSERT_NO_FATAL_FAILURE(Open({"window", folder.path + "no.gif"}));
    PostMessageA(AwaitDialog("Kestrel Stage"), WM_COMMAND, IDOK, 0);
    ASSERT_TRUE(Await([this] { return DialogOf(stage.processId, "Kestrel Stage") == nullptr; }));
    EXPECT_EQ(TextOf(window), "Kestrel Stage");
    PostMessageA(window, WM_CLOSE, 0, 0);
    ExpectEnd();
}

TEST_F(StageWindow, AMissingPluginIsReported) {
    ASSERT_NO_FATAL_FAILURE(Open({"window", input, "--plugin", folder.path + "no.dll"}));
    Press(window, IDC_EFFECTS);
    PostMessageA(AwaitDialog("Kestrel Stage"), WM_COMMAND, IDOK, 0);
    ASSERT_TRUE(Await([this] { return DialogOf(stage.processId, "Kestrel Stage") == nullptr; }));
    PostMessageA(window, WM_CLOSE, 0, 0);
    ExpectEnd();
}

}  // namespace
}  // namespace kfx::test
