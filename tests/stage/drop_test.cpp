// SPDX-License-Identifier: MIT
// Files that are dropped on Stage's window and on the plug-in's, and the plug-in's source while it is open.
#include "commands/text_windows.h"
#include "tests/stage/own_stage.h"

namespace kfx::test {
namespace {

using namespace stage;

// Whether a control of the window shows this text.
bool Shows(HWND dialog, const std::string& text) {
    for (HWND child = GetWindow(dialog, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
        if (IsWindowVisible(child) && TextOf(child) == text) return true;
    }
    return false;
}

bool IsPath(const std::string& one, const std::string& other) {
    return commands::AbsolutePath(one) == commands::AbsolutePath(other);
}

struct Dropping : OwnStage {
    std::string other = folder.path + "b\xC3\xA4r.gif";

    void OpenBoth() {
        WriteTestGif(other, 2);
        ASSERT_NO_FATAL_FAILURE(OpenHere({input}));
        ASSERT_TRUE(WaitForTitle("in.gif - Kestrel Stage"));
    }

    bool ShowsOther() const {
        return WaitFor(
            [this] { return IsPath(State()->document.path, other) && State()->history.steps.size() == 1; });
    }

    // A file that holds how it was made.
    std::string Made() const {
        const std::string made = folder.path + "made.gif";
        RunningProgram kestrel;
        EXPECT_TRUE(StartProgram(
            FileBesideTest("kestrel.exe"),
            {"apply", input, "-o", made, "--effect", "Emboss", "--set", "Radius=18", "--set", "Depth=31"},
            &kestrel));
        EXPECT_EQ(WaitForEnd(&kestrel), 0);
        return made;
    }
};

TEST_F(Dropping, The_first_file_on_the_window_is_opened_and_the_others_are_offered) {
    ASSERT_NO_FATAL_FAILURE(OpenBoth());
    const std::string third = folder.path + "third.gif";
    WriteTestGif(third, 1);
    Drop(window, {other, third});
    EXPECT_TRUE(ShowsOther());
    Run(kFirstRecent + 1);
    EXPECT_TRUE(WaitForTitle("third.gif - Kestrel Stage"));
}

TEST_F(Dropping, Unsaved_work_is_asked_about_once) {
    ASSERT_NO_FATAL_FAILURE(OpenBoth());
    ASSERT_NO_FATAL_FAILURE(Build("Solarize"));
    Drop(window, {other});
    ASSERT_NO_FATAL_FAILURE(AnswerMessage(IDCANCEL));
    EXPECT_TRUE(IsPath(State()->document.path, input));
    Drop(window, {other});
    ASSERT_NO_FATAL_FAILURE(AnswerMessage(IDNO));
    EXPECT_TRUE(ShowsOther());
}

TEST_F(Dropping, A_file_on_the_plugins_window_becomes_the_source_of_both) {
    ASSERT_NO_FATAL_FAILURE(OpenBoth());
    ASSERT_NO_FATAL_FAILURE(Build("Solarize"));
    HWND plugin = nullptr;
    ASSERT_NO_FATAL_FAILURE(OpenPlugin(&plugin));
    Drop(plugin, {other});
    ASSERT_NO_FATAL_FAILURE(AnswerMessage(IDNO));
    EXPECT_TRUE(ShowsOther());
    EXPECT_TRUE(IsWindow(plugin)) << "the plug-in's window stays";
    EXPECT_EQ(State()->history.steps.size(), 1u);
    EXPECT_TRUE(WaitFor([this] { return IsPath(State()->remembered.recent.front(), other); }));
    Press(plugin, kPluginBuild);
    ASSERT_TRUE(WaitForPossible(kUndo));
    EXPECT_EQ(State()->history.steps.back().film->frames.size(), 2u) << "the other file's frames";
}

TEST_F(Dropping, A_made_file_on_the_plugins_window_moves_its_sliders) {
    const std::string made = Made();
    ASSERT_NO_FATAL_FAILURE(OpenBoth());
    HWND plugin = nullptr;
    ASSERT_NO_FATAL_FAILURE(OpenPlugin(&plugin));
    EXPECT_FALSE(Shows(plugin, "31"));
    Drop(plugin, {made});
    EXPECT_TRUE(WaitForTitle("made.gif - Kestrel Stage"));
    EXPECT_TRUE(WaitFor([plugin] { return Shows(plugin, "18") && Shows(plugin, "31"); }));
}

TEST_F(Dropping, A_file_that_cannot_be_read_leaves_the_plugins_source) {
    ASSERT_NO_FATAL_FAILURE(OpenBoth());
    HWND plugin = nullptr;
    ASSERT_NO_FATAL_FAILURE(OpenPlugin(&plugin));
    Drop(plugin, {folder.path + "no.gif"});
    ASSERT_NO_FATAL_FAILURE(AnswerMessage(IDOK));
    EXPECT_EQ(TextOf(GetDlgItem(plugin, kPluginSize)), "40 x 30");
    EXPECT_TRUE(IsPath(State()->document.path, input));
}

TEST_F(Dropping, A_source_that_is_chosen_in_the_plugins_window_is_noted_fully) {
    const std::string plain = folder.path + "plain.gif";
    WriteTestGif(plain, 2);
    ASSERT_NO_FATAL_FAILURE(OpenBoth());
    HWND plugin = nullptr;
    ASSERT_NO_FATAL_FAILURE(OpenPlugin(&plugin));
    Press(plugin, kPluginSelect);
    ASSERT_NO_FATAL_FAILURE(ChooseFile(plain));
    EXPECT_TRUE(WaitForTitle("plain.gif - Kestrel Stage"));
    EXPECT_TRUE(IsPath(State()->document.path, plain));
    EXPECT_TRUE(WaitFor([&] { return IsPath(State()->remembered.recent.front(), plain); }));
    EXPECT_EQ(State()->history.steps.size(), 1u);
    EXPECT_EQ(State()->history.steps[0].film->frames.size(), 2u);
}

TEST_F(Dropping, A_build_after_a_kept_test_stands_on_it) {
    ASSERT_NO_FATAL_FAILURE(OpenBoth());
    HWND plugin = nullptr;
    ASSERT_NO_FATAL_FAILURE(OpenPlugin(&plugin));
    SelectEffect(plugin, "Solarize");
    Press(plugin, kPluginTest);
    ASSERT_TRUE(WaitForPossible(kKeepTest));
    Run(kKeepTest);
    ASSERT_TRUE(WaitFor([this] { return SendMessageA(Control(kHistoryList), LB_GETCOUNT, 0, 0) == 2; }));
    SelectEffect(plugin, "Emboss");
    Press(plugin, kPluginBuild);
    ASSERT_TRUE(WaitForText(kUndo, "Undo Emboss"));
    ASSERT_TRUE(WaitForPossible(kUndo));
    const auto& steps = State()->history.steps;
    ASSERT_EQ(steps.size(), 3u);
    EXPECT_EQ(steps[2].sourceFingerprint, stage::FingerprintOf(*steps[1].film));
    EXPECT_NE(steps[2].sourceFingerprint, stage::FingerprintOf(*steps[0].film));
    EXPECT_TRUE(IsPath(State()->document.path, input)) << "the file is the same";
}

}  // namespace
}  // namespace kfx::test
