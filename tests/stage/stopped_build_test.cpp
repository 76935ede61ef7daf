// SPDX-License-Identifier: MIT
// Builds of the plug-in that are stopped. The plug-in waits at its first frame until the test lets it go on.
#include "tests/stage/stage_program.h"

#include <commctrl.h>

namespace kfx::test {
namespace {

using namespace stage;

constexpr int kPluginAbout = 18;
constexpr int kAboutHelp = 9;

bool HasFocus(HWND window) {
    GUITHREADINFO thread = {};
    thread.cbSize = sizeof thread;
    return GetGUIThreadInfo(GetWindowThreadProcessId(window, nullptr), &thread) && thread.hwndFocus == window;
}

struct StoppedBuild : StageWindow {
    HANDLE started = CreateEventA(nullptr, TRUE, FALSE, "KfxMisbehavingStarted");
    HANDLE go = CreateEventA(nullptr, TRUE, FALSE, "KfxMisbehavingGo");
    HANDLE between = CreateEventA(nullptr, TRUE, FALSE, "KfxMisbehavingBetween");
    HANDLE on = CreateEventA(nullptr, TRUE, FALSE, "KfxMisbehavingOn");
    HWND plugin = nullptr;

    void OpenAll() {
        const std::string program = folder.path + "kestrel-stage.exe";
        WriteText(program, ReadText(FileBesideTest("kestrel-stage.exe")));
        WriteText(folder.path + "kfxplug1.dll", ReadText(FileBesideTest("misbehaving_plugin.dll")));
        WriteText(folder.path + "real_plugin.dll", ReadText(FileBesideTest("kfxplug1.dll")));
        SetEnvironmentVariableA("KFX_MISBEHAVIOUR", "progress");
        ASSERT_NO_FATAL_FAILURE(Open({input}, program));
        ASSERT_TRUE(WaitForTitle("in.gif - Kestrel Stage"));
        ASSERT_NO_FATAL_FAILURE(OpenPlugin(&plugin));
    }

    void TearDown() override {
        SetEvent(go);
        SetEvent(on);
        SetEnvironmentVariableA("KFX_MISBEHAVIOUR", nullptr);
        StageWindow::TearDown();
        for (const HANDLE event : {started, go, between, on}) CloseHandle(event);
    }

    // Waits until Stage has taken every message that it has been sent so far.
    bool WaitForMessages() const {
        const HWND slider = Control(kFrameSlider);
        const LRESULT marked = SendMessageA(slider, TBM_GETLINESIZE, 0, 0) + 1;
        PostMessageA(slider, TBM_SETLINESIZE, 0, marked);
        return WaitFor([slider, marked] { return SendMessageA(slider, TBM_GETLINESIZE, 0, 0) == marked; });
    }

    // Presses a button that builds, and Stop while the first frame is being made.
    void StopAfter(int button) {
        Press(plugin, button);
        ASSERT_TRUE(WaitFor([this] { return WaitForSingleObject(started, 0) == WAIT_OBJECT_0; }));
        ASSERT_TRUE(WaitForPossible(kStopWork));
        Run(kStopWork);
        ASSERT_TRUE(WaitForText(kStatusText, "Stopping."));
        SetEvent(go);
        // All frames are made, and the plug-in counts no parts until it goes on.
        ASSERT_TRUE(WaitFor([this] { return WaitForSingleObject(between, 0) == WAIT_OBJECT_0; }));
        ASSERT_TRUE(WaitForMessages());
        EXPECT_TRUE(IsStopShown()) << "the build has not ended";
        EXPECT_EQ(TextOf(Control(kStatusText)), "Stopping.");
        SetEvent(on);
    }

    bool IsStopShown() const { return IsWindowVisible(Control(kStopWork)) != 0; }
};

TEST_F(StoppedBuild, A_stopped_build_leaves_no_result_and_asks_nothing) {
    ASSERT_NO_FATAL_FAILURE(OpenAll());
    ASSERT_NO_FATAL_FAILURE(StopAfter(kPluginBuild));
    EXPECT_TRUE(WaitForPossible(kOpen)) << "the plug-in's window closes without a message";
    EXPECT_TRUE(WaitForText(kStatusText, ""));
    EXPECT_FALSE(IsPossible(kUndo));
    ASSERT_NO_FATAL_FAILURE(Close(false));
}

TEST_F(StoppedBuild, A_test_after_a_stopped_one_has_a_result) {
    ASSERT_NO_FATAL_FAILURE(OpenAll());
    ASSERT_NO_FATAL_FAILURE(StopAfter(kPluginTest));
    EXPECT_TRUE(WaitFor([this] { return !IsStopShown(); }));
    EXPECT_TRUE(WaitForText(kStatusText, ""));
    EXPECT_FALSE(IsPossible(kKeepTest));
    // A box of the plug-in's stays for its user.
    Press(plugin, kPluginAbout);
    HWND about = nullptr;
    ASSERT_NO_FATAL_FAILURE(WaitForDialog("About", &about));
    // Behind what the host may have posted.
    const HWND help = GetDlgItem(about, kAboutHelp);
    PostMessageA(about, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(help), TRUE);
    EXPECT_TRUE(WaitFor([about, help] { return HasFocus(help) || !IsWindow(about); }));
    ASSERT_TRUE(IsWindow(about));
    PostMessageA(about, WM_COMMAND, IDCANCEL, 0);
    EXPECT_TRUE(WaitFor([about] { return !IsWindow(about); }));
    Press(plugin, kPluginTest);
    ASSERT_TRUE(WaitForPossible(kKeepTest));
    Run(kDropTest);
    EXPECT_TRUE(WaitFor([this] { return !IsPossible(kKeepTest); }));
    ASSERT_NO_FATAL_FAILURE(Close(false));
}

}  // namespace
}  // namespace kfx::test
