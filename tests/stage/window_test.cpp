// SPDX-License-Identifier: MIT
// Stage's own window, used as a user would: by its buttons, and the plug-in's.
#include <windows.h>
#include <commctrl.h>

#include "tests/stage/stage_program.h"

namespace kfx::test {
namespace {

using namespace stage;

TEST_F(StageWindow, The_source_goes_through_the_plugin_and_the_result_waits_to_be_saved) {
    ASSERT_NO_FATAL_FAILURE(Open({input}));
    ASSERT_TRUE(WaitForTitle("in.gif - Kestrel Stage"));
    EXPECT_FALSE(IsPossible(kSave));
    HWND plugin = nullptr;
    ASSERT_NO_FATAL_FAILURE(OpenPlugin(&plugin));
    EXPECT_TRUE(WaitFor([this] { return !IsPossible(kOpen); }));
    EXPECT_TRUE(IsPossible(kPlay)) << "the window lives on beside the plug-in's";
    Press(plugin, kPluginBuild);
    EXPECT_TRUE(WaitForPossible(kSave));
    EXPECT_TRUE(WaitForTitle("*in.gif - Kestrel Stage"));
    ASSERT_NO_FATAL_FAILURE(Close(true));
}

TEST_F(StageWindow, A_file_that_cannot_be_read_is_reported_and_the_window_stays) {
    ASSERT_NO_FATAL_FAILURE(Open({folder.path + "no.gif"}));
    ASSERT_NO_FATAL_FAILURE(AnswerMessage(IDOK));
    EXPECT_TRUE(WaitForTitle("Kestrel Stage"));
    ASSERT_NO_FATAL_FAILURE(Close(false));
}

TEST_F(StageWindow, A_missing_plugin_is_reported) {
    // The plug-in is looked for beside the program.
    const std::string alone = folder.path + "kestrel-stage.exe";
    WriteText(alone, ReadText(FileBesideTest("kestrel-stage.exe")));
    ASSERT_NO_FATAL_FAILURE(Open({input}, alone));
    ASSERT_TRUE(WaitForTitle("in.gif - Kestrel Stage"));
    Run(kEffects);
    ASSERT_NO_FATAL_FAILURE(AnswerMessage(IDOK));
    ASSERT_NO_FATAL_FAILURE(Close(false));
}

TEST_F(StageWindow, Steps_and_the_slider_stop_at_their_frame) {
    ASSERT_NO_FATAL_FAILURE(Open({input}));
    ASSERT_TRUE(WaitForTitle("in.gif - Kestrel Stage"));
    Run(kFirstFrame);
    EXPECT_TRUE(WaitForText(kFrameText, "Frame 1 of 3    0.00 of 0.18 s"));
    EXPECT_TRUE(WaitForText(kPlay, "Play"));
    Run(kNextFrame);
    EXPECT_TRUE(WaitForText(kFrameText, "Frame 2 of 3    0.05 of 0.18 s"));
    Run(kLastFrame);
    EXPECT_TRUE(WaitForText(kFrameText, "Frame 3 of 3    0.11 of 0.18 s"));
    EXPECT_TRUE(WaitFor([this] { return !IsPossible(kNextFrame); }));
    EXPECT_EQ(SendMessageA(Control(kFrameSlider), TBM_GETPOS, 0, 0), 3);
    Run(kPreviousFrame);
    EXPECT_TRUE(WaitForText(kFrameText, "Frame 2 of 3    0.05 of 0.18 s"));
    // The key that moves the slider.
    PostMessageA(Control(kFrameSlider), WM_KEYDOWN, VK_LEFT, 0);
    EXPECT_TRUE(WaitForText(kFrameText, "Frame 1 of 3    0.00 of 0.18 s"));
    Run(kPlay);
    EXPECT_TRUE(WaitForText(kPlay, "Pause"));
    ASSERT_NO_FATAL_FAILURE(Close(false));
}

TEST_F(StageWindow, The_speed_has_five_steps) {
    ASSERT_NO_FATAL_FAILURE(Open({input}));
    ASSERT_TRUE(WaitForPossible(kSlower));
    Run(kSlower);
    Run(kSlower);
    EXPECT_TRUE(WaitFor([this] { return !IsPossible(kSlower); }));
    for (int i = 0; i < 4; ++i) Run(kFaster);
    EXPECT_TRUE(WaitFor([this] { return !IsPossible(kFaster) && IsPossible(kSlower); }));
    ASSERT_NO_FATAL_FAILURE(Close(false));
}

TEST_F(StageWindow, Several_files_open_the_first_and_offer_the_others) {
    const std::string other = folder.path + "other.gif";
    WriteTestGif(other, 2);
    ASSERT_NO_FATAL_FAILURE(Open({input, other}));
    ASSERT_TRUE(WaitForTitle("in.gif - Kestrel Stage"));
    Run(kFirstRecent + 1);
    EXPECT_TRUE(WaitForTitle("other.gif - Kestrel Stage"));
    ASSERT_NO_FATAL_FAILURE(Close(false));
}

TEST_F(StageWindow, Builds_stack_and_are_undone_done_again_and_repeated) {
    ASSERT_NO_FATAL_FAILURE(Open({input}));
    ASSERT_TRUE(WaitForTitle("in.gif - Kestrel Stage"));
    ASSERT_NO_FATAL_FAILURE(Build("Solarize"));
    ASSERT_NO_FATAL_FAILURE(Build("Emboss"));
    EXPECT_EQ(SendMessageA(Control(kHistoryList), LB_GETCOUNT, 0, 0), 3);
    Run(kUndo);
    EXPECT_TRUE(WaitForText(kUndo, "Undo Solarize"));
    EXPECT_TRUE(WaitForText(kRedo, "Redo Emboss"));
    Run(kRedo);
    EXPECT_TRUE(WaitForText(kUndo, "Undo Emboss"));
    EXPECT_FALSE(IsPossible(kRedo));
    Run(kRepeatEffect);
    EXPECT_TRUE(WaitFor([this] { return SendMessageA(Control(kHistoryList), LB_GETCOUNT, 0, 0) == 4; }));
    ASSERT_NO_FATAL_FAILURE(Close(true));
}

TEST_F(StageWindow, A_test_is_kept_or_dropped) {
    ASSERT_NO_FATAL_FAILURE(Open({input}));
    ASSERT_TRUE(WaitForTitle("in.gif - Kestrel Stage"));
    HWND plugin = nullptr;
    ASSERT_NO_FATAL_FAILURE(OpenPlugin(&plugin));
    Press(plugin, kPluginTest);
    ASSERT_TRUE(WaitForPossible(kKeepTest)) << "while the plug-in's window is open";
    Run(kDropTest);
    EXPECT_TRUE(WaitFor([this] { return !IsPossible(kKeepTest); }));
    EXPECT_EQ(SendMessageA(Control(kHistoryList), LB_GETCOUNT, 0, 0), 1);
    Press(plugin, kPluginTest);
    ASSERT_TRUE(WaitForPossible(kKeepTest));
    Run(kKeepTest);
    EXPECT_TRUE(WaitFor([this] { return SendMessageA(Control(kHistoryList), LB_GETCOUNT, 0, 0) == 2; }));
    // Closing Stage closes the plug-in first.
    ASSERT_NO_FATAL_FAILURE(Close(true));
}

}  // namespace
}  // namespace kfx::test
