// SPDX-License-Identifier: MIT
// Settings documents through the plug-in's window: its menu, its file dialogs, what is saved and what comes
// back.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>
#include <commdlg.h>

#include "resources/resource_ids.h"
#include "tests/dll/support/binary_files.h"
#include "tests/dll/support/window_test.h"
#include "tests/support/wait_for.h"

namespace kfx::test {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::Pair;

constexpr char kHeader[] =
    ";This is a document created by Kestrel FX #1 Plugin by Quorvane Labs - do not edit.\r\n";
constexpr DWORD kCommonFlags =
    OFN_ENABLESIZING | OFN_EXPLORER | OFN_ENABLEHOOK | OFN_NOCHANGEDIR | OFN_HIDEREADONLY;

int CountOf(const std::string& text, const std::string& piece) {
    int count = 0;
    for (size_t at = text.find(piece); at != std::string::npos; at = text.find(piece, at + 1)) ++count;
    return count;
}

class Documents : public WindowTest {};

TEST_F(Documents, The_button_pops_up_a_menu_of_three) {
    session.Click(IDC_OPEN_SAVE);
    ASSERT_EQ(session.Menus().size(), 1u);
    EXPECT_THAT(session.Menus()[0].items,
                ElementsAre(Pair(37u, "Open"), Pair(38u, "Save"), Pair(39u, "Save as...")));
}

TEST_F(Documents, A_menu_entry_is_a_command) {
    session.AnswerMenu(IDM_DOCUMENT_OPEN);
    session.Click(IDC_OPEN_SAVE);
    ASSERT_EQ(session.AskedPaths().size(), 1u);
    EXPECT_FALSE(session.AskedPaths()[0].toSave);
}

TEST(DocumentsInOwnWindow, Saving_holds_every_panel_and_the_windows_own_controls) {
    FakeHost host;
    PluginSession session(host, WithConfiguration("Style005Level = 33\n"));
    const std::string path = session.DocumentsFolder() + "mine.kx1";
    session.AnswerFileDialog(path);
    session.Command(IDM_DOCUMENT_SAVE_AS);
    const std::string text = ReadTextFile(path);
    EXPECT_EQ(text.find(kHeader), 0u) << text;
    EXPECT_THAT(text, HasSubstr("\r\n;Start of document\r\n"));
    EXPECT_EQ(text.substr(text.size() - 18), ";End of document\r\n");
    // Effects that are not selected are there as well.
    for (const char* line :
         {"\nSCROLL100=5\r\n", "\nSCROLL127=33\r\n", "\nSCROLL193=1485\r\n", "\nCHKBOX214=1\r\n",
          "\nCMBBOX172=0\r\n", "\nCMBBOX50=14\r\n", "\nCMBBOX13=6\r\n", "\nCHKBOX10=1\r\n",
          "\nCHKBOX14=0\r\n", "\nCHKBOX15=0\r\n", "\nCHKBOX19=0\r\n", "\nCHKBOX20=1\r\n", "\nCHKBOX53=1\r\n",
          "\nCLRBTN54=8355711\r\n", "\nTXTFLD41=\r\n", "\nSCROLL171=0\r\n"})
        EXPECT_THAT(text, HasSubstr(line));
    EXPECT_EQ(CountOf(text, "\nSCROLL"), 37) << "36 sliders, and the box that is bound like one";
    session.Close();
    EXPECT_THAT(session.ConfigurationText(), HasSubstr("CurrentFileName = " + path + "\r\n"));
}

TEST(DocumentsInOwnWindow, Opening_restores_every_panel_the_effect_and_the_options) {
    FakeHost host;
    std::string path;
    std::string saved;
    {
        PluginSession session(host,
                              WithConfiguration("MainEffect = 3\nStyle005Level = 33\nStyle015Angle = 100\n"
                                                "Style019Distributed = 0\nMainDither = 1\nTruecolour = 0\n"
                                                "LocalBackgroundUse = 0\nMainPalette = 2\n"));
        const std::string document = session.DocumentsFolder() + "mine.kx1";
        session.AnswerFileDialog(document);
        session.Command(IDM_DOCUMENT_SAVE_AS);
        saved = ReadTextFile(document);
    }
    PluginSession session(host);
    path = session.DocumentsFolder() + "mine.kx1";
    WriteTextFile(path, saved);
    session.AnswerFileDialog(path);
    session.ClearEvents();
    session.Command(IDM_DOCUMENT_OPEN);
    EXPECT_EQ(session.SelectionOf(IDC_EFFECT), 3);
    EXPECT_TRUE(session.IsShown(IDC_GAUSSIAN_BLUR_RADIUS));
    EXPECT_FALSE(session.IsShown(IDC_RASTER_DENSITY));
    EXPECT_EQ(session.PositionOf(IDC_OBSCURE_LEVEL), 33);
    EXPECT_EQ(session.TextOf(IDC_OBSCURE_LEVEL + 1), "33");
    EXPECT_EQ(session.TextOf(IDC_SWIRL_ANGLE + 1), "-1340");
    EXPECT_FALSE(session.IsChecked(IDC_NORMALIZE_DISTRIBUTED));
    EXPECT_TRUE(session.IsChecked(IDC_DITHER));
    EXPECT_FALSE(session.IsChecked(IDC_TRUE_COLOR));
    EXPECT_FALSE(session.IsEnabled(IDC_BACKGROUND_COLOR)) << "follows its check box";
    EXPECT_THAT(session.Events(), Contains("preview"));
    session.Close();
    const std::string text = session.ConfigurationText();
    EXPECT_THAT(text,
                AllOf(HasSubstr("MainEffect = 3\r\n"), HasSubstr("Style005Level = 33\r\n"),
                      HasSubstr("Style015Angle = 100\r\n"), HasSubstr("MainDither = 1\r\n"),
                      HasSubstr("MainPalette = 2\r\n"), HasSubstr("CurrentFileName = " + path + "\r\n")));
}

TEST(DocumentsInOwnWindow, The_dialogs_are_asked_for_kx1_files) {
    FakeHost host;
    PluginSession session(host, WithConfiguration("CurrentFileName = C:\\some where\\looks.kx1\n"));
    session.Command(IDM_DOCUMENT_OPEN);
    session.Command(IDM_DOCUMENT_SAVE_AS);
    const std::vector<AskedPath> asked = session.AskedPaths();
    ASSERT_EQ(asked.size(), 2u);
    for (const AskedPath& dialog : asked) {
        EXPECT_EQ(dialog.file, "C:\\some where\\looks.kx1");
        EXPECT_EQ(dialog.filter, "KX1 files|*.KX1");
        EXPECT_EQ(dialog.extension, "KX1");
        EXPECT_TRUE(dialog.hooked);
    }
    EXPECT_EQ(asked[0].folder, "C:\\some where\\");
    EXPECT_EQ(asked[0].flags, kCommonFlags | OFN_FILEMUSTEXIST | OFN_PATHMUSTEXIST);
    EXPECT_EQ(asked[1].flags, kCommonFlags | OFN_OVERWRITEPROMPT);
    session.Close();
    EXPECT_THAT(session.ConfigurationText(), HasSubstr("CurrentFileName = C:\\some where\\looks.kx1\r\n"))
        << "both dialogs were cancelled";
}

TEST(DocumentsInOwnWindow, Save_asks_only_while_the_document_is_untitled) {
    FakeHost host;
    PluginSession session(host, WithConfiguration("CurrentFileName = C:\\x\\UNTITLED.kx1\n"));
    session.Command(IDM_DOCUMENT_SAVE);
    ASSERT_EQ(session.AskedPaths().size(), 1u);
    EXPECT_TRUE(session.AskedPaths()[0].toSave);
    const std::string path = session.DocumentsFolder() + "mine.kx1";
    session.AnswerFileDialog(path);
    session.Command(IDM_DOCUMENT_SAVE);
    EXPECT_THAT(ReadTextFile(path), Not(IsEmpty()));
    session.Scroll(IDC_SWIRL_ANGLE, SB_LINERIGHT);
    session.Command(IDM_DOCUMENT_SAVE);
    EXPECT_EQ(session.AskedPaths().size(), 2u) << "now it has a name";
    EXPECT_THAT(ReadTextFile(path), HasSubstr("SCROLL193=1486\r\n"));
}

TEST_F(Documents, What_cannot_be_created_is_told_and_the_name_stays) {
    session.AnswerFileDialog("C:\\no such folder\\mine.kx1");
    session.Command(IDM_DOCUMENT_SAVE_AS);
    EXPECT_THAT(session.Messages(), ElementsAre("There has been an error creating the requested file."));
    session.Close();
    EXPECT_THAT(session.ConfigurationText(), HasSubstr("CurrentFileName = untitled.kx1\r\n"));
}

TEST_F(Documents, What_cannot_be_opened_or_is_damaged_is_told_and_changes_nothing) {
    session.AnswerFileDialog("C:\\no such folder\\mine.kx1");
    session.Command(IDM_DOCUMENT_OPEN);
    const std::string path = session.DocumentsFolder() + "damaged.kx1";
    WriteTextFile(path, "SCROLL193=7\r\n");
    session.AnswerFileDialog(path);
    session.Command(IDM_DOCUMENT_OPEN);
    EXPECT_THAT(session.Messages(), ElementsAre("There has been an error opening the requested file.",
                                                "This file has been damaged."));
    EXPECT_EQ(session.PositionOf(IDC_SWIRL_ANGLE), 1485);
    session.Close();
    EXPECT_THAT(session.ConfigurationText(), HasSubstr("CurrentFileName = untitled.kx1\r\n"));
}

TEST_F(Documents, Lines_are_taken_in_any_case_with_spare_equals_signs_and_behind_the_end) {
    const std::string path = session.DocumentsFolder() + "odd.kx1";
    WriteTextFile(path, std::string(kHeader) +
                            "scroll193= =1500\r\nCHKBOX193=1\r\n;End of document\r\n"
                            "SCROLL127=9\r\nSCROLL2=5\r\nSCROLL9999=5\r\nSCROLL\r\nnonsense\r\n");
    session.AnswerFileDialog(path);
    session.Command(IDM_DOCUMENT_OPEN);
    EXPECT_EQ(session.PositionOf(IDC_SWIRL_ANGLE), 1500);
    EXPECT_EQ(session.TextOf(IDC_SWIRL_ANGLE + 1), "60");
    EXPECT_EQ(session.PositionOf(IDC_OBSCURE_LEVEL), 9);
    EXPECT_THAT(session.Messages(), IsEmpty());
}

TEST_F(Documents, An_effect_that_the_list_does_not_have_does_no_harm) {
    const std::string path = session.DocumentsFolder() + "odd.kx1";
    WriteTextFile(path, std::string(kHeader) + "CMBBOX50=99\r\nCMBBOX13=99\r\nCMBBOX172=99\r\n");
    session.AnswerFileDialog(path);
    session.Command(IDM_DOCUMENT_OPEN);
    ASSERT_TRUE(session.IsOpen());
    session.Choose(IDC_EFFECT, 4);
    EXPECT_TRUE(session.IsShown(IDC_GLASS_BLOCK_SIZE));
    EXPECT_EQ(session.Close(), 1u);
}

TEST(DocumentsInOwnWindow, What_the_host_does_not_take_stays_off) {
    FakeHost host;
    host.context.capabilities = 0;
    PluginSession session(host);
    const std::string path = session.DocumentsFolder() + "wish.kx1";
    WriteTextFile(path, std::string(kHeader) + "CHKBOX10=1\r\nCHKBOX19=1\r\n");
    session.AnswerFileDialog(path);
    session.Command(IDM_DOCUMENT_OPEN);
    EXPECT_FALSE(session.IsChecked(IDC_TRUE_COLOR));
    EXPECT_FALSE(session.IsChecked(IDC_SUPERCOMPRESS));
}

COLORREF MiddleOf(HWND control) {
    RECT area;
    GetClientRect(control, &area);
    const HDC dc = GetDC(control);
    const COLORREF pixel = GetPixel(dc, area.right / 2, area.bottom / 2);
    ReleaseDC(control, dc);
    return pixel;
}

TEST(DocumentsInOwnWindow, A_colours_swatch_shows_the_documents_colour) {
    FakeHost host;
    PluginSession session(host, WithConfiguration("LocalBackgroundColor = 65280\n"));
    const HWND swatch = session.Control(IDC_BACKGROUND_COLOR);
    ASSERT_TRUE(WaitFor([&] { return MiddleOf(swatch) == 0x00FF00; }));
    const std::string path = session.DocumentsFolder() + "red.kx1";
    WriteTextFile(path, std::string(kHeader) + "CLRBTN54=255\r\n");
    session.AnswerFileDialog(path);
    session.Command(IDM_DOCUMENT_OPEN);
    EXPECT_TRUE(WaitFor([&] { return MiddleOf(swatch) == 0x0000FF; }));
}

TEST(DocumentsInOwnWindow, An_invalid_name_is_left_out_of_the_dialog) {
    FakeHost host;
    PluginSession session(host, WithConfiguration("CurrentFileName = C:\\here\\what?.kx1\n"));
    const std::string path = session.DocumentsFolder() + "mine.kx1";
    session.AnswerFileDialog(path);
    session.Command(IDM_DOCUMENT_SAVE);
    const std::vector<AskedPath> asked = session.AskedPaths();
    EXPECT_THAT(asked, IsEmpty()) << "it has a name";
    session.Command(IDM_DOCUMENT_SAVE_AS);
    session.Command(IDM_DOCUMENT_OPEN);
    std::vector<std::string> names;
    for (const AskedPath& dialog : session.AskedPaths()) names.push_back(dialog.file);
    EXPECT_THAT(names, ElementsAre("C:\\here\\what?.kx1", "", path)) << "the last has the chosen name";
    EXPECT_THAT(ReadTextFile(path), HasSubstr(";End of document"));
}

TEST(DocumentsInOwnWindow, A_cancelled_dialog_is_not_asked_again) {
    FakeHost host;
    PluginSession session(host, WithConfiguration("CurrentFileName = C:\\here\\what.kx1\n"));
    session.Command(IDM_DOCUMENT_OPEN);
    EXPECT_EQ(session.AskedPaths().size(), 1u);
}

// A host may have chosen binary files for its whole process.
TEST_F(Documents, Are_text_files_in_a_process_that_opens_binary_ones) {
    const std::string path = session.DocumentsFolder() + "mine.kx1";
    session.AnswerFileDialog(path);
    const BinaryFiles binary;
    session.Command(IDM_DOCUMENT_SAVE_AS);
    EXPECT_EQ(ReadTextFile(path).find(kHeader), 0u);
    WriteTextFile(path, std::string(kHeader) + "SCROLL193=1500\r\n\x1A\r\nSCROLL193=7\r\n");
    session.Command(IDM_DOCUMENT_OPEN);
    EXPECT_EQ(session.PositionOf(IDC_SWIRL_ANGLE), 1500) << "a text ends at its end-of-file character";
}

// The messages that carry a document's lines, as other programs send them.
TEST_F(Documents, A_control_applies_its_own_line_only) {
    EXPECT_TRUE(session.ApplyLine(IDC_SWIRL_ANGLE, "SCROLL193=1485"));
    EXPECT_FALSE(session.ApplyLine(IDC_SWIRL_ANGLE, "CHKBOX193=1"));
    EXPECT_FALSE(session.ApplyLine(IDC_SWIRL_ANGLE, "SCROLL193"));
    EXPECT_TRUE(session.ApplyLine(IDC_DITHER, "CHKBOX15=1"));
    EXPECT_TRUE(session.IsChecked(IDC_DITHER));
    EXPECT_FALSE(session.ApplyLine(IDC_CANCEL, "CHKBOX2=1")) << "takes no part";
}

}  // namespace
}  // namespace kfx::test
