// SPDX-License-Identifier: MIT
// How the plug-in's window opens and closes, and what it does with the configuration file.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "effects/effect_table.h"
#include "resources/resource_ids.h"
#include "tests/dll/support/binary_files.h"
#include "tests/dll/support/memory_ledger.h"
#include "tests/dll/support/window_test.h"
#include "tests/support/import_patch.h"

namespace kfx::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class Opening : public WindowTest {};

TEST_F(Opening, Shows_title_effects_and_palettes_in_the_middle_of_the_screen) {
    ASSERT_TRUE(session.IsOpen());
    char title[100] = "";
    GetWindowTextA(session.Window(), title, sizeof title);
    EXPECT_STREQ(title, "Kestrel FX #1");
    std::vector<std::string> effects;
    for (size_t i = 0; i < EffectCount(); ++i) effects.push_back(EffectAt(i)->name);
    EXPECT_EQ(session.ItemsOf(IDC_EFFECT), effects);
    EXPECT_EQ(session.SelectionOf(IDC_EFFECT), 14);
    EXPECT_THAT(session.ItemsOf(IDC_PALETTE),
                ElementsAre("Black and white", "Sixteen-color Windows", "32-color orthogonal",
                            "64-color orthogonal", "128-color orthogonal", "216-color safe",
                            "256-color orthogonal", "256-color with gray", "256 gray levels"));
    EXPECT_EQ(session.SelectionOf(IDC_PALETTE), 6);
    RECT place;
    GetWindowRect(session.Window(), &place);
    EXPECT_EQ(place.left, (GetSystemMetrics(SM_CXSCREEN) - (place.right - place.left)) / 2);
    EXPECT_EQ(place.top, (GetSystemMetrics(SM_CYSCREEN) - (place.bottom - place.top)) / 2);
    EXPECT_THAT(host.Transcript(), ElementsAre("REQ code=21 target=0 value=0 size answer=1"));
}

TEST_F(Opening, Controls_carry_their_texts) {
    const std::pair<int, const char*> texts[] = {{IDC_BUILD, "Build"},
                                                 {IDC_CANCEL, "Cancel"},
                                                 {IDC_HELP_BUTTON, "Help"},
                                                 {IDC_TEST, "&Test"},
                                                 {IDC_SELECT, "Select..."},
                                                 {IDC_OPEN_SAVE, "Open/Save"},
                                                 {IDC_ABOUT, "A&bout"},
                                                 {IDC_SUPERCOMPRESS, "&Supercompress"},
                                                 {IDC_ADD_COMMENT, "Add comme&nt"},
                                                 {IDC_DITHER, "&Dither"},
                                                 {IDC_CUSTOM_PALETTE, "&Custom palette"},
                                                 {IDC_TRUE_COLOR, "Tr&ue color"},
                                                 {IDC_LOCAL_BACKGROUND, "&Local background"},
                                                 {IDC_EFFECT_CAPTION, "Effect"},
                                                 {IDC_PALETTE_CAPTION, "Palette:"},
                                                 {IDC_SOURCE_CAPTION, "Current animation:"}};
    for (const auto& [id, text] : texts) EXPECT_EQ(session.TextOf(id), text) << id;
    EXPECT_TRUE(session.IsShown(IDC_PREVIEW));
    EXPECT_FALSE(session.IsEnabled(IDC_SOURCE_PATH));
    EXPECT_FALSE(session.IsEnabled(IDC_SOURCE_SIZE));
}

TEST_F(Opening, Without_a_source_nothing_can_be_built) {
    EXPECT_FALSE(session.IsEnabled(IDC_BUILD));
    EXPECT_FALSE(session.IsEnabled(IDC_TEST));
}

TEST(OpeningInOwnWindow, Check_boxes_lists_and_colour_come_from_the_settings) {
    FakeHost host;
    PluginSession session(host,
                          WithConfiguration("MainDither = 1\nMainSupercompress = 1\nTruecolour = 0\n"
                                            "AddDescriptiveCommentBlock = 0\nLocalBackgroundUse = 0\n"
                                            "LocalBackgroundColor = 255\nMainEffect = 3\nMainPalette = 2\n"));
    EXPECT_TRUE(session.IsChecked(IDC_DITHER));
    EXPECT_TRUE(session.IsChecked(IDC_SUPERCOMPRESS));
    EXPECT_FALSE(session.IsChecked(IDC_TRUE_COLOR));
    EXPECT_FALSE(session.IsChecked(IDC_ADD_COMMENT));
    EXPECT_FALSE(session.IsChecked(IDC_LOCAL_BACKGROUND));
    EXPECT_FALSE(session.IsEnabled(IDC_BACKGROUND_COLOR));
    EXPECT_EQ(session.TextOf(IDC_BACKGROUND_COLOR), "255");
    EXPECT_EQ(session.SelectionOf(IDC_EFFECT), 3);
    EXPECT_EQ(session.SelectionOf(IDC_PALETTE), 2);
}

TEST_F(Opening, A_custom_palette_is_off_at_first_and_its_list_disabled) {
    EXPECT_FALSE(session.IsChecked(IDC_CUSTOM_PALETTE));
    EXPECT_FALSE(session.IsEnabled(IDC_PALETTE));
}

TEST(OpeningInOwnWindow, What_the_host_does_not_take_cannot_be_chosen) {
    FakeHost host;
    host.context.capabilities = 0;
    PluginSession session(host, WithConfiguration("Truecolour = 1\nMainSupercompress = 1\n"));
    EXPECT_FALSE(session.IsChecked(IDC_TRUE_COLOR));
    EXPECT_FALSE(session.IsEnabled(IDC_TRUE_COLOR));
    EXPECT_FALSE(session.IsChecked(IDC_SUPERCOMPRESS));
    EXPECT_FALSE(session.IsEnabled(IDC_SUPERCOMPRESS));
    session.Close();
    EXPECT_THAT(session.ConfigurationText(), HasSubstr("Truecolour = 0"));
    EXPECT_THAT(session.ConfigurationText(), HasSubstr("MainSupercompress = 1"));
}

TEST(OpeningInOwnWindow, Each_capability_stands_alone) {
    FakeHost host;
    host.context.capabilities = kHostTakesSupercompressed;
    {
        PluginSession session(host, WithConfiguration("MainSupercompress = 1\n"));
        EXPECT_TRUE(session.IsChecked(IDC_SUPERCOMPRESS));
        EXPECT_FALSE(session.IsEnabled(IDC_TRUE_COLOR));
    }
    host.context.capabilities = kHostTakesTrueColor;
    PluginSession session(host);
    EXPECT_TRUE(session.IsChecked(IDC_TRUE_COLOR));
    EXPECT_FALSE(session.IsEnabled(IDC_SUPERCOMPRESS));
}

TEST(OpeningInOwnWindow, With_shift_held_the_file_is_not_read_and_the_document_starts_anew) {
    FakeHost host;
    SessionOptions options =
        WithConfiguration("MainEffect = 3\nCurrentFileName = C:\\x.kx1\nOpenPath = C:\\y\\\n");
    options.shiftHeld = true;
    PluginSession session(host, options);
    EXPECT_EQ(session.SelectionOf(IDC_EFFECT), 14);
    session.Click(IDC_DITHER);
    session.Close();
    const std::string text = session.ConfigurationText();
    EXPECT_THAT(text, HasSubstr("CurrentFileName = " + session.DocumentsFolder() + "untitled.kx1\r\n"));
    EXPECT_THAT(text, HasSubstr("OpenPath = " + session.DocumentsFolder() + "\r\n"));
    EXPECT_THAT(text, HasSubstr("MainEffect = 14\r\n"));
    EXPECT_THAT(text, HasSubstr("MainDither = 1\r\n")) << "what was changed meanwhile is kept";
}

TEST(OpeningInOwnWindow, The_previous_source_is_reopened_only_when_its_file_exists_and_it_is_wanted) {
    for (const bool wanted : {true, false}) {
        for (const bool exists : {true, false}) {
            FakeHost host;
            host.Serve(OneFrame());
            const std::string path = exists ? PluginPath() : "C:\\no such file.gif";
            PluginSession session(
                host, WithConfiguration("FileNamePath = " + path +
                                        "\nReloadPreviousSession = " + (wanted ? "1" : "0") + "\n"));
            const std::vector<std::string> requests = host.Requests(HostRequest::OpenAnimation);
            if (wanted && exists) {
                EXPECT_THAT(requests, ElementsAre(HasSubstr("path=\"" + path + "\"")));
                EXPECT_TRUE(session.IsEnabled(IDC_BUILD));
            } else {
                EXPECT_THAT(requests, IsEmpty()) << wanted << exists;
            }
        }
    }
}

TEST(OpeningInOwnWindow, An_effect_whose_panel_cannot_be_made_closes_the_window) {
    for (int panel = 1; panel <= static_cast<int>(EffectCount()); ++panel) {
        FakeHost host;
        SessionOptions options;
        options.failingPanel = panel;
        PluginSession session(host, options);
        EXPECT_EQ(session.WaitUntilClosed(), 1u);
        EXPECT_THAT(session.Messages(), ElementsAre("This plugin could not be initialized")) << panel;
        EXPECT_EQ(CountLedger().liveBlocks, 0u);
    }
}

TEST(OpeningInOwnWindow, Works_with_a_host_that_refuses_everything) {
    FakeHost host;
    host.Serve(OneFrame());
    host.RefuseAll();
    PluginSession session(host, WithConfiguration("FileNamePath = " + PluginPath() + "\n"));
    ASSERT_TRUE(session.IsOpen());
    for (const int button : {IDC_SELECT, IDC_HELP_BUTTON, IDC_BACKGROUND_COLOR}) session.Click(button);
    EXPECT_FALSE(session.IsEnabled(IDC_BUILD));
    session.Command(IDC_TEST);
    EXPECT_THAT(session.Messages(),
                ElementsAre("There has been an error displaying the Help document.", "Memory error"));
    EXPECT_EQ(session.Close(), 1u);
    EXPECT_EQ(CountLedger().liveBlocks, 0u);
}

TEST(Closing, Writes_every_key_and_reads_it_again) {
    FakeHost host;
    PluginSession session(host, WithConfiguration("MainEffect = 5\nStyle009Wavelength = 4000\nFirstRun = 0\n"
                                                  "PatchLevel = 9\nImageFile = C:\\a b.bmp  \n"));
    session.Close();
    const std::string text = session.ConfigurationText();
    EXPECT_THAT(
        text,
        HasSubstr(";Quorvane Labs animtion plugin configuration file\r\n;Edit this at your own risk\r\n"));
    EXPECT_THAT(text, HasSubstr("MainEffect = 5\r\n"));
    EXPECT_THAT(text, HasSubstr("Style009Wavelength = 4000\r\n"));
    EXPECT_THAT(text, HasSubstr("FirstRun = 0\r\n"));
    EXPECT_THAT(text, HasSubstr("PatchLevel = 1\r\n"));
    EXPECT_THAT(text, HasSubstr("ImageFile = C:\\a b.bmp  \r\n"));
    EXPECT_THAT(text, HasSubstr("OpenPath = " + session.DocumentsFolder() + "\r\n")) << "empty at the start";
    EXPECT_THAT(text, HasSubstr("VersionNumber = 512\r\n"));
}

TEST(Closing, Writes_nothing_and_says_nothing_when_the_makers_folder_is_missing) {
    FakeHost host;
    SessionOptions options;
    options.configurationFolder = false;
    PluginSession session(host, options);
    EXPECT_EQ(session.Close(), 1u);
    const std::string path = session.ConfigurationPath();
    EXPECT_EQ(GetFileAttributesA(path.substr(0, path.rfind('\\')).c_str()), INVALID_FILE_ATTRIBUTES)
        << "the folder is not made";
    EXPECT_THAT(session.Messages(), IsEmpty());
}

TEST(Closing, Reads_and_writes_nothing_when_the_shell_knows_no_folder) {
    FakeHost host;
    SessionOptions options = WithConfiguration("MainEffect = 3\n");
    options.folderLookupFails = true;
    PluginSession session(host, options);
    EXPECT_EQ(session.SelectionOf(IDC_EFFECT), 14);
    session.Close();
    EXPECT_EQ(session.ConfigurationText(), "MainEffect = 3\n");
    EXPECT_THAT(session.Messages(), IsEmpty());
}

// A host may have chosen binary files for its whole process.
TEST(Closing, Reads_and_writes_text_in_a_process_that_opens_binary_files) {
    const BinaryFiles binary;
    FakeHost host;
    // With its line end, the line is just as long as lines are read; a byte more would be a line of its own.
    const std::string key = "ImageFile = ";
    PluginSession session(host, WithConfiguration(key + std::string(258 - key.size(), 'x') + "\r\n"));
    EXPECT_TRUE(session.IsChecked(IDC_ADD_COMMENT)) << "no empty line was read";
    session.Close();
    EXPECT_THAT(session.ConfigurationText(), HasSubstr("MainEffect = 14\r\n"));
}

constexpr char kSmallConfiguration[] = "MainEffect = 3\n";

HANDLE OpenAlone(const std::string& path) {
    return CreateFileA(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
}

TEST(Closing, A_file_that_could_not_be_opened_keeps_what_it_holds) {
    FakeHost host;
    HANDLE held = nullptr;
    SessionOptions options = WithConfiguration(kSmallConfiguration);
    options.prepare = [&](const std::string& path) { held = OpenAlone(path); };
    PluginSession session(host, options);
    EXPECT_EQ(session.SelectionOf(IDC_EFFECT), 14);
    CloseHandle(held);
    session.Click(IDC_DITHER);
    session.Close();
    EXPECT_EQ(session.ConfigurationText(), kSmallConfiguration);
    EXPECT_THAT(session.Messages(), IsEmpty());
}

BOOL WINAPI ReadNothing(HANDLE, LPVOID, DWORD, LPDWORD read, LPOVERLAPPED) {
    if (read) *read = 0;
    SetLastError(ERROR_LOCK_VIOLATION);
    return FALSE;
}

TEST(Closing, A_file_whose_bytes_could_not_be_read_keeps_them) {
    FakeHost host;
    auto failingReads = std::make_unique<ImportPatch>(GetModuleHandleA("msvcrt.dll"), "ReadFile",
                                                      AddressOfFunction(ReadNothing));
    PluginSession session(host, WithConfiguration(kSmallConfiguration));
    failingReads.reset();
    EXPECT_EQ(session.SelectionOf(IDC_EFFECT), 14);
    session.Close();
    EXPECT_EQ(session.ConfigurationText(), kSmallConfiguration);
}

TEST(Closing, A_folder_in_the_files_place_is_no_missing_file) {
    FakeHost host;
    SessionOptions options;
    options.prepare = [](const std::string& path) { CreateDirectoryA(path.c_str(), nullptr); };
    PluginSession session(host, options);
    RemoveDirectoryA(session.ConfigurationPath().c_str());
    session.Close();
    EXPECT_EQ(session.ConfigurationText(), "");
}

TEST(Closing, After_shift_even_a_file_that_could_not_be_opened_is_written_anew) {
    FakeHost host;
    HANDLE held = nullptr;
    SessionOptions options = WithConfiguration(kSmallConfiguration);
    options.shiftHeld = true;
    options.prepare = [&](const std::string& path) { held = OpenAlone(path); };
    PluginSession session(host, options);
    CloseHandle(held);
    session.Close();
    EXPECT_THAT(session.ConfigurationText(), HasSubstr("MainEffect = 14\r\n"));
}

TEST(Closing, By_the_close_box_is_like_cancel) {
    FakeHost host;
    PluginSession session(host);
    PostMessageA(session.Window(), WM_CLOSE, 0, 0);
    EXPECT_EQ(session.WaitUntilClosed(), 1u);
    EXPECT_THAT(session.ConfigurationText(), Not(IsEmpty()));
}

TEST(Closing, Leaves_no_memory_and_no_graphics_objects_behind) {
    DWORD graphics[3];
    for (DWORD& count : graphics) {
        FakeHost host;
        host.Serve(OneFrame());
        {
            PluginSession session(host);
            session.Click(IDC_SELECT);
            session.Close();
            EXPECT_EQ(CountLedger().liveBlocks, 0u);
            EXPECT_EQ(CountLedger().strangeFrees, 0u);
        }
        count = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS);
    }
    EXPECT_EQ(graphics[2], graphics[1]);
}

}  // namespace
}  // namespace kfx::test
