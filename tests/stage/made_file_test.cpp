// SPDX-License-Identifier: MIT
// Files that tell how they were made bring the plug-in's settings back.
#include "stage/help_browser.h"
#include "stage/progress.h"
#include "tests/stage/stage_program.h"

namespace kfx::test {
namespace {

// Whether a control of the window shows this text.
bool Shows(HWND dialog, const std::string& text) {
    for (HWND child = GetWindow(dialog, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
        if (IsWindowVisible(child) && TextOf(child) == text) return true;
    }
    return false;
}

TEST_F(StageWindow, A_made_file_opens_the_plugin_with_its_sliders_where_they_were) {
    const std::string made = folder.path + "made.gif";
    RunningProgram kestrel;
    ASSERT_TRUE(StartProgram(
        FileBesideTest("kestrel.exe"),
        {"apply", input, "-o", made, "--effect", "Emboss", "--set", "Radius=18", "--set", "Depth=31"},
        &kestrel));
    ASSERT_EQ(WaitForEnd(&kestrel), 0);
    ASSERT_NO_FATAL_FAILURE(Open({made}));
    ASSERT_TRUE(WaitForTitle("made.gif - Kestrel Stage"));
    HWND plugin = nullptr;
    ASSERT_NO_FATAL_FAILURE(OpenPlugin(&plugin));
    EXPECT_TRUE(WaitFor([plugin] { return Shows(plugin, "Emboss"); }));
    EXPECT_TRUE(WaitFor([plugin] { return Shows(plugin, "18") && Shows(plugin, "31"); }));
    ASSERT_NO_FATAL_FAILURE(Close(false));
}

TEST_F(StageWindow, A_settings_document_opens_the_plugin_with_it) {
    const std::string document = folder.path + "mine.kx1";
    WriteText(document,
              ";This is a document created by Kestrel FX #1 Plugin by Quorvane Labs - do not edit.\n"
              ";Start of document\nCMBBOX50=12\nTXTFLD41=C:\\other.gif\n;End of document\n");
    ASSERT_NO_FATAL_FAILURE(Open({input}));
    ASSERT_TRUE(WaitForTitle("in.gif - Kestrel Stage"));
    ASSERT_NO_FATAL_FAILURE(Close(false));
    ASSERT_NO_FATAL_FAILURE(Open({document}));
    HWND plugin = nullptr;
    ASSERT_NO_FATAL_FAILURE(WaitForDialog("Kestrel FX #1", &plugin));
    EXPECT_TRUE(WaitFor(
        [plugin] { return SendMessageA(GetDlgItem(plugin, kPluginEffect), CB_GETCURSEL, 0, 0) == 12; }));
    EXPECT_FALSE(Shows(plugin, "C:\\other.gif")) << "a document says nothing about the source";
    ASSERT_NO_FATAL_FAILURE(Close(false));
}

TEST(HelpAddress, Is_one_that_a_browser_understands_with_its_topic) {
    EXPECT_EQ(stage::AddressOf("C:\\My files\\A#1 50%.HTML", "emboss"),
              "file:///C:/My%20files/A%231%2050%25.HTML#emboss");
    EXPECT_EQ(stage::AddressOf("C:\\\xC3\xA4.HTML", ""), "file:///C:/%C3%A4.HTML");
}

TEST(TimeLeft, Is_told_once_it_can_be_known) {
    EXPECT_EQ(stage::TimeLeftText(500, 1, 10), "") << "too early";
    EXPECT_EQ(stage::TimeLeftText(5000, 0, 10), "") << "nothing is done";
    EXPECT_EQ(stage::TimeLeftText(5000, 5, 10), "about 5 s left");
    EXPECT_EQ(stage::TimeLeftText(60000, 1, 3), "about 2 min left");
    EXPECT_EQ(stage::TimeLeftText(60000, 3, 3), "");
}

}  // namespace
}  // namespace kfx::test
