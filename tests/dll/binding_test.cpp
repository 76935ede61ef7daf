// SPDX-License-Identifier: MIT
// What the plug-in's window does with a changed control: which setting follows, and when the preview does.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "resources/resource_ids.h"
#include "tests/dll/support/window_test.h"
#include "tests/support/wait_for.h"

namespace kfx::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr UINT_PTR kUpdateTimer = 15;
// A day: it never comes while a test runs.
const char kLongUpdateDelay[] = "UpdateDelay = 86400000\n";

class Binding : public WindowTest {};

TEST_F(Binding, Option_check_boxes_are_stored_and_leave_the_preview_alone) {
    session.ClearEvents();
    for (const int box : {IDC_TRUE_COLOR, IDC_DITHER, IDC_SUPERCOMPRESS, IDC_ADD_COMMENT}) session.Click(box);
    EXPECT_THAT(session.Events(), IsEmpty());
    session.Close();
    const std::string text = session.ConfigurationText();
    for (const char* line : {"Truecolour = 0\r\n", "MainDither = 1\r\n", "MainSupercompress = 1\r\n",
                             "AddDescriptiveCommentBlock = 0\r\n"})
        EXPECT_THAT(text, HasSubstr(line));
}

TEST(BindingInOwnWindow, A_panel_check_box_restarts_the_update_timer) {
    FakeHost host;
    SessionOptions options;
    options.configuration = std::string("MainEffect = 10\n") + kLongUpdateDelay;
    PluginSession session(host, options);
    session.ClearEvents();
    session.Click(IDC_NORMALIZE_DISTRIBUTED);
    EXPECT_THAT(session.Events(), ElementsAre("kill 15", "set 15 86400000"));
    EXPECT_THAT(session.RunningTimers(), Contains(kUpdateTimer));
    session.Click(IDC_NORMALIZE_DISTRIBUTED);
    EXPECT_THAT(session.Events(), ElementsAre("kill 15", "set 15 86400000", "kill 15", "set 15 86400000"));
    session.Click(IDC_NORMALIZE_DISTRIBUTED);
    session.Close();
    EXPECT_THAT(session.ConfigurationText(), HasSubstr("Style019Distributed = 0\r\n"));
}

TEST(BindingInOwnWindow, The_update_timer_repaints_once_and_ends) {
    FakeHost host;
    SessionOptions options;
    options.configuration = "MainEffect = 10\nUpdateDelay = 200\n";
    PluginSession session(host, options);
    session.ClearEvents();
    session.Click(IDC_NORMALIZE_DISTRIBUTED);
    EXPECT_TRUE(WaitFor([&session] { return session.Events().size() >= 4; }));
    EXPECT_TRUE(session.Settle());
    EXPECT_THAT(session.Events(), ElementsAre("kill 15", "set 15 200", "kill 15", "preview"));
    EXPECT_THAT(session.RunningTimers(), Not(Contains(kUpdateTimer)));
}

TEST_F(Binding, Other_timers_are_ignored) {
    session.ClearEvents();
    SendMessageA(session.Window(), WM_TIMER, 16, 0);
    session.Settle();
    EXPECT_THAT(session.Events(), IsEmpty());
}

TEST(BindingInOwnWindow, Local_background_enables_its_colour_and_restarts_the_timer) {
    FakeHost host;
    SessionOptions options;
    options.configuration = kLongUpdateDelay;
    PluginSession session(host, options);
    EXPECT_TRUE(session.IsEnabled(IDC_BACKGROUND_COLOR));
    session.ClearEvents();
    session.Click(IDC_LOCAL_BACKGROUND);
    EXPECT_FALSE(session.IsEnabled(IDC_BACKGROUND_COLOR));
    EXPECT_THAT(session.Events(), ElementsAre("kill 15", "set 15 86400000"));
    session.Click(IDC_LOCAL_BACKGROUND);
    EXPECT_TRUE(session.IsEnabled(IDC_BACKGROUND_COLOR));
    EXPECT_FALSE(session.IsEnabled(IDC_BUILD)) << "still no source";
}

TEST(BindingInOwnWindow, A_colour_comes_from_the_host_which_is_offered_the_8_8_4_palette) {
    FakeHost host;
    host.chosenColor = 0x20C0FF;
    PluginSession session(host);
    host.ClearTranscript();
    session.ClearEvents();
    session.Click(IDC_BACKGROUND_COLOR);
    EXPECT_THAT(host.Transcript(), ElementsAre("REQ code=11 target=0 value=0 size=40 version=4096 at16=24 "
                                               "color=0x7F7F7F reserved=0 owner=window answer=1"));
    EXPECT_THAT(session.Events(), Contains("preview"));
    EXPECT_EQ(session.TextOf(IDC_BACKGROUND_COLOR), std::to_string(0x20C0FF));
    const std::vector<uint8_t> palette = host.OfferedPalette();
    const uint8_t eight[] = {0, 36, 72, 108, 144, 180, 216, 255}, four[] = {0, 85, 170, 255};
    for (size_t r = 0; r < 8; ++r) {
        for (size_t g = 0; g < 8; ++g) {
            for (size_t b = 0; b < 4; ++b) {
                const uint8_t* entry = palette.data() + 3 * ((r * 8 + g) * 4 + b);
                ASSERT_TRUE(entry[0] == eight[r] && entry[1] == eight[g] && entry[2] == four[b])
                    << r << g << b;
            }
        }
    }
    session.Close();
    EXPECT_THAT(session.ConfigurationText(),
                HasSubstr("LocalBackgroundColor = " + std::to_string(0x20C0FF) + "\r\n"));
}

TEST_F(Binding, A_colour_that_the_host_refuses_changes_nothing) {
    host.Refuse(HostRequest::ChooseColor, 1);
    session.Click(IDC_BACKGROUND_COLOR);
    session.Close();
    EXPECT_THAT(session.ConfigurationText(), HasSubstr("LocalBackgroundColor = 8355711\r\n"));
}

TEST_F(Binding, The_palette_list_is_stored_when_it_closes_up) {
    session.Click(IDC_CUSTOM_PALETTE);
    EXPECT_TRUE(session.IsEnabled(IDC_PALETTE));
    SendMessageA(session.Control(IDC_PALETTE), CB_SETCURSEL, 2, 0);
    session.Command(IDC_PALETTE, CBN_SELCHANGE);
    session.ClearEvents();
    session.Choose(IDC_PALETTE, 3);
    EXPECT_THAT(session.Events(), IsEmpty());
    session.Click(IDC_CUSTOM_PALETTE);
    EXPECT_FALSE(session.IsEnabled(IDC_PALETTE));
    session.Close();
    EXPECT_THAT(session.ConfigurationText(), HasSubstr("MainPalette = 3\r\n"));
}

TEST_F(Binding, Selecting_without_closing_up_stores_no_palette) {
    SendMessageA(session.Control(IDC_PALETTE), CB_SETCURSEL, 2, 0);
    session.Command(IDC_PALETTE, CBN_SELCHANGE);
    session.Close();
    EXPECT_THAT(session.ConfigurationText(), HasSubstr("MainPalette = 6\r\n"));
}

TEST_F(Binding, No_palette_selected_counts_as_the_first) {
    session.Choose(IDC_PALETTE, -1);
    session.Close();
    EXPECT_THAT(session.ConfigurationText(), HasSubstr("MainPalette = 0\r\n"));
}

TEST(BindingInOwnWindow, A_panel_list_is_stored_and_repaints_when_it_closes_up) {
    FakeHost host;
    SessionOptions options;
    options.configuration = "MainEffect = 5\n";
    PluginSession session(host, options);
    session.ClearEvents();
    SendMessageA(session.Control(IDC_HSB_CHANNELS), CB_SETCURSEL, 2, 0);
    session.Command(IDC_HSB_CHANNELS, CBN_SELCHANGE);
    EXPECT_THAT(session.Events(), Not(Contains("preview")));
    session.Choose(IDC_HSB_CHANNELS, 5);
    EXPECT_THAT(session.Events(), Contains("preview"));
    session.Close();
    EXPECT_THAT(session.ConfigurationText(), HasSubstr("Style010ChannelsOption = 5\r\n"));
}

// The text field's notification is 8, the closing up of lists: no field sends it, a host's own template
// might.
TEST_F(Binding, A_text_is_stored_on_notification_8_only) {
    SetWindowTextA(session.Control(IDC_SOURCE_PATH), "C:\\typed.gif");
    session.Command(IDC_SOURCE_PATH, EN_CHANGE & 0xFF);
    session.Command(IDC_SOURCE_PATH, 8);
    SetWindowTextA(session.Control(IDC_SOURCE_PATH), "C:\\later.gif");
    session.Command(IDC_SOURCE_PATH, 0);
    session.Close();
    EXPECT_THAT(session.ConfigurationText(), HasSubstr("FileNamePath = C:\\typed.gif\r\n"));
}

TEST_F(Binding, Commands_while_the_window_is_hidden_store_nothing) {
    ShowWindow(session.Window(), SW_HIDE);
    SendMessageA(session.Control(IDC_DITHER), BM_SETCHECK, BST_CHECKED, 0);
    session.Command(IDC_DITHER);
    session.Close();
    EXPECT_THAT(session.ConfigurationText(), HasSubstr("MainDither = 0\r\n"));
}

TEST(Logo, Runs_on_a_timer_of_its_own_and_takes_every_message_with_its_number) {
    FakeHost host;
    PluginSession session(host);
    EXPECT_THAT(session.Events(), Contains("set 99 60"));
    session.ClearEvents();
    // The scroll code stands in the same word: a message whose word is 99 is a logo tick, whatever it is.
    SendMessageA(session.Window(), WM_COMMAND, 99, 0);
    EXPECT_TRUE(session.Settle());
    session.Close();
    EXPECT_THAT(session.Events(), Contains("kill 99"));
}

}  // namespace
}  // namespace kfx::test
