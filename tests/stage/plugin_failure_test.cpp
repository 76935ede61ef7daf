// SPDX-License-Identifier: MIT
// Plug-ins that crash or hang take nothing of Stage's along.
#include "tests/stage/stage_program.h"

namespace kfx::test {
namespace {

using namespace stage;

// Stage in a folder of its own, with a plug-in that does what its name says.
struct FailingPlugin : StageWindow {
    void OpenWith(const char* misbehaviour) {
        const std::string program = folder.path + "kestrel-stage.exe";
        WriteText(program, ReadText(FileBesideTest("kestrel-stage.exe")));
        WriteText(folder.path + "kfxplug1.dll", ReadText(FileBesideTest("misbehaving_plugin.dll")));
        SetEnvironmentVariableA("KFX_MISBEHAVIOUR", misbehaviour);
        ASSERT_NO_FATAL_FAILURE(Open({input}, program));
        ASSERT_TRUE(WaitForTitle("in.gif - Kestrel Stage"));
        Run(kEffects);
    }

    void TearDown() override {
        SetEnvironmentVariableA("KFX_MISBEHAVIOUR", nullptr);
        StageWindow::TearDown();
    }
};

TEST_F(FailingPlugin, A_crash_ends_the_plugin_and_leaves_the_picture_there) {
    ASSERT_NO_FATAL_FAILURE(OpenWith("crash"));
    ASSERT_NO_FATAL_FAILURE(AnswerMessage(IDOK));
    EXPECT_TRUE(WaitForPossible(kOpen));
    Run(kFirstFrame);
    EXPECT_TRUE(WaitForText(kFrameText, "Frame 1 of 3    0.00 of 0.18 s"));
    // It is not called again.
    Run(kEffects);
    ASSERT_NO_FATAL_FAILURE(AnswerMessage(IDOK));
    ASSERT_NO_FATAL_FAILURE(Close(false));
}

TEST_F(FailingPlugin, A_hanging_plugin_leaves_the_window_alive_and_does_not_keep_it_open) {
    ASSERT_NO_FATAL_FAILURE(OpenWith("hang"));
    EXPECT_TRUE(WaitFor([this] { return !IsPossible(kOpen); }));
    Run(kLastFrame);
    EXPECT_TRUE(WaitForText(kFrameText, "Frame 3 of 3    0.11 of 0.18 s"));
    PostMessageA(window, WM_CLOSE, 0, 0);
    ASSERT_NO_FATAL_FAILURE(AnswerMessage(IDNO));
    EXPECT_TRUE(IsWindow(window)) << "the user wants to wait";
    PostMessageA(window, WM_CLOSE, 0, 0);
    HWND box = nullptr;
    ASSERT_NO_FATAL_FAILURE(WaitForDialog("Kestrel Stage", &box));
    PostMessageA(box, WM_COMMAND, IDYES, 0);
    EXPECT_EQ(WaitForEnd(&this->stage), 0);
}

}  // namespace
}  // namespace kfx::test
