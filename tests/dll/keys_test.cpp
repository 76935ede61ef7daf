// SPDX-License-Identifier: MIT
// The keyboard and the wheel in the plug-in's window: what Enter presses, and lists that are worked without
// opening them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "effects/effect_table.h"
#include "resources/resource_ids.h"
#include "tests/dll/support/plugin_session.h"
#include "tests/support/wait_for.h"

namespace kfx::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;

int FocusedControl(const PluginSession& session) {
    GUITHREADINFO info = {};
    info.cbSize = sizeof info;
    GetGUIThreadInfo(GetWindowThreadProcessId(session.Window(), nullptr), &info);
    return GetDlgCtrlID(info.hwndFocus);
}

void WaitForFocusOn(const PluginSession& session, int control) {
    ASSERT_TRUE(WaitFor([&] { return FocusedControl(session) == control; }))
        << "the focus is on " << FocusedControl(session) << ", not on " << control;
}

// Every control that shows itself as what Enter presses.
std::vector<int> DefaultButtons(const PluginSession& session) {
    std::vector<int> found;
    for (HWND child = GetWindow(session.Window(), GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
        if (SendMessageA(child, WM_GETDLGCODE, 0, 0) & DLGC_DEFPUSHBUTTON)
            found.push_back(GetDlgCtrlID(child));
    }
    return found;
}

void WaitForDefaultButton(const PluginSession& session, int button) {
    WaitFor([&] { return DefaultButtons(session) == std::vector<int>{button}; });
    EXPECT_THAT(DefaultButtons(session), ElementsAre(button));
}

void MoveFocus(PluginSession& session, int control) {
    SendMessageA(session.Window(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(session.Control(control)), TRUE);
    WaitForFocusOn(session, control);
}

// As the keyboard sends it, to the control that has the focus.
void PressKey(PluginSession& session, int control, WPARAM key) {
    ASSERT_NO_FATAL_FAILURE(WaitForFocusOn(session, control));
    PostMessageA(session.Control(control), WM_KEYDOWN, key, 1);
    session.Settle();
}

// Enter in this control presses the build button, which closes the window.
void ExpectEnterBuilds(PluginSession& session, FakeHost& host, int control) {
    WaitForDefaultButton(session, IDC_BUILD);
    PressKey(session, control, VK_RETURN);
    EXPECT_FALSE(session.IsOpen());
    EXPECT_THAT(host.Requests(HostRequest::NewTask), SizeIs(1));
}

TEST(Keys, Enter_presses_select_while_it_has_the_focus_and_build_once_there_is_a_source) {
    for (const uint32_t style : {0u, 1u, 3u}) {
        FakeHost host;
        host.context.buttonStyle = style;
        host.Serve(OneFrame());
        PluginSession session(host);
        for (const size_t asked : {1u, 2u}) {
            WaitForFocusOn(session, IDC_SELECT);
            WaitForDefaultButton(session, IDC_SELECT);
            PressKey(session, IDC_SELECT, VK_RETURN);
            EXPECT_THAT(host.Requests(HostRequest::OpenAnimation), SizeIs(asked));
        }
        MoveFocus(session, IDC_DITHER);
        ExpectEnterBuilds(session, host, IDC_DITHER);
    }
}

TEST(Keys, A_source_that_is_accepted_leaves_the_focus_where_it_is) {
    FakeHost host;
    host.Serve(OneFrame());
    PluginSession session(host);
    MoveFocus(session, IDC_EFFECT);
    session.Command(IDC_SELECT);
    ASSERT_TRUE(session.IsEnabled(IDC_BUILD));
    WaitForFocusOn(session, IDC_EFFECT);
    WaitForDefaultButton(session, IDC_BUILD);
}

TEST(Keys, A_restored_source_gives_build_the_focus_and_enter) {
    for (const uint32_t style : {0u, 2u}) {
        FakeHost host;
        host.context.buttonStyle = style;
        host.Serve(OneFrame());
        PluginSession session(host, WithConfiguration("FileNamePath = " + PluginPath() + "\n"));
        WaitForFocusOn(session, IDC_BUILD);
        ExpectEnterBuilds(session, host, IDC_BUILD);
    }
}

TEST(Keys, Enter_in_a_check_box_presses_select_until_there_is_a_source) {
    FakeHost host;
    host.Serve(OneFrame());
    PluginSession session(host);
    host.Refuse(HostRequest::OpenAnimation, 1);
    for (const size_t asked : {1u, 2u}) {
        MoveFocus(session, IDC_DITHER);
        WaitForDefaultButton(session, IDC_SELECT);
        PressKey(session, IDC_DITHER, VK_RETURN);
        EXPECT_THAT(host.Requests(HostRequest::OpenAnimation), SizeIs(asked));
    }
    MoveFocus(session, IDC_DITHER);
    ExpectEnterBuilds(session, host, IDC_DITHER);
}

TEST(Keys, A_control_that_is_disabled_hands_on_focus_and_enter_together) {
    FakeHost host;
    host.Serve(OneFrame());
    PluginSession session(host);
    session.Click(IDC_SELECT);
    MoveFocus(session, IDC_BACKGROUND_COLOR);
    session.Click(IDC_LOCAL_BACKGROUND);
    MoveFocus(session, IDC_LOCAL_BACKGROUND);
    session.Click(IDC_LOCAL_BACKGROUND);
    MoveFocus(session, IDC_BACKGROUND_COLOR);
    SendMessageA(session.Control(IDC_LOCAL_BACKGROUND), BM_SETCHECK, BST_UNCHECKED, 0);
    session.Command(IDC_LOCAL_BACKGROUND);
    EXPECT_FALSE(session.IsEnabled(IDC_BACKGROUND_COLOR));
    WaitForFocusOn(session, IDC_SELECT);
    WaitForDefaultButton(session, IDC_SELECT);
}

// What changes the row of a list that stays closed.
struct ListInput {
    const char* name;
    UINT message;
    WPARAM word;
    int before;
    int after;
};

const int kLastEffect = static_cast<int>(EffectCount()) - 1;

const ListInput kListInputs[] = {
    {.name = "down", .message = WM_KEYDOWN, .word = VK_DOWN, .before = 10, .after = 11},
    {.name = "up", .message = WM_KEYDOWN, .word = VK_UP, .before = 10, .after = 9},
    {.name = "home", .message = WM_KEYDOWN, .word = VK_HOME, .before = 10, .after = 0},
    {.name = "end", .message = WM_KEYDOWN, .word = VK_END, .before = 10, .after = kLastEffect},
    {.name = "a letter", .message = WM_CHAR, .word = 'z', .before = 10, .after = 19},
    {.name = "wheel down",
     .message = WM_MOUSEWHEEL,
     .word = MAKEWPARAM(0, static_cast<WORD>(-WHEEL_DELTA)),
     .before = 10,
     .after = 11},
    {.name = "wheel up",
     .message = WM_MOUSEWHEEL,
     .word = MAKEWPARAM(0, WHEEL_DELTA),
     .before = 10,
     .after = 9},
};

TEST(ClosedLists, Another_row_of_the_effect_list_is_another_effect) {
    constexpr int kPanelControls[] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, IDC_NORMALIZE_DISTRIBUTED};
    for (const ListInput& input : kListInputs) {
        FakeHost host;
        host.Serve(OneFrame());
        PluginSession session(host, WithConfiguration("MainEffect = " + std::to_string(input.before) + "\n"));
        session.Click(IDC_SELECT);
        MoveFocus(session, IDC_EFFECT);
        ASSERT_TRUE(session.IsShown(kPanelControls[input.before]));
        session.ClearEvents();
        PostMessageA(session.Control(IDC_EFFECT), input.message, input.word, 1);
        session.Settle();
        ASSERT_EQ(session.SelectionOf(IDC_EFFECT), input.after) << input.name;
        EXPECT_FALSE(session.IsShown(kPanelControls[input.before])) << input.name;
        EXPECT_THAT(session.Events(), Contains("preview")) << input.name;
        session.Close();
        EXPECT_THAT(session.ConfigurationText(),
                    HasSubstr("MainEffect = " + std::to_string(input.after) + "\r\n"))
            << input.name;
    }
}

TEST(ClosedLists, Another_row_of_the_palette_list_is_another_palette) {
    FakeHost host;
    PluginSession session(host);
    session.Click(IDC_CUSTOM_PALETTE);
    MoveFocus(session, IDC_PALETTE);
    PressKey(session, IDC_PALETTE, VK_DOWN);
    ASSERT_EQ(session.SelectionOf(IDC_PALETTE), 7);
    session.Close();
    EXPECT_THAT(session.ConfigurationText(), HasSubstr("MainPalette = 7\r\n"));
}

TEST(ClosedLists, Another_row_of_a_panel_list_is_stored_and_previewed) {
    FakeHost host;
    PluginSession session(host, WithConfiguration("MainEffect = 5\n"));
    MoveFocus(session, IDC_HSB_CHANNELS);
    session.ClearEvents();
    PressKey(session, IDC_HSB_CHANNELS, VK_END);
    ASSERT_EQ(session.SelectionOf(IDC_HSB_CHANNELS), 6);
    EXPECT_THAT(session.Events(), Contains("preview"));
    session.Close();
    EXPECT_THAT(session.ConfigurationText(), HasSubstr("Style010ChannelsOption = 6\r\n"));
}

// A setting may name a row that the list does not have now; keys that change no row must not lose it.
TEST(ClosedLists, A_key_that_changes_no_row_changes_no_setting) {
    FakeHost host;
    PluginSession session(host, WithConfiguration("MainPalette = 9\n"));
    session.Click(IDC_CUSTOM_PALETTE);
    MoveFocus(session, IDC_PALETTE);
    for (const WPARAM key : {VK_SHIFT, VK_F1}) PressKey(session, IDC_PALETTE, key);
    session.Close();
    EXPECT_THAT(session.ConfigurationText(), HasSubstr("MainPalette = 9\r\n"));
}

bool IsDropped(const PluginSession& session, int list) {
    return SendMessageA(session.Control(list), CB_GETDROPPEDSTATE, 0, 0) != 0;
}

TEST(OpenLists, Moving_shows_no_other_panel_and_repaints_nothing_until_the_list_closes) {
    for (const WPARAM closingKey : {VK_RETURN, VK_ESCAPE, VK_F4}) {
        FakeHost host;
        host.Serve(OneFrame());
        PluginSession session(host, WithConfiguration("MainEffect = 10\n"));
        session.Click(IDC_SELECT);
        MoveFocus(session, IDC_EFFECT);
        session.ClearEvents();
        PressKey(session, IDC_EFFECT, VK_F4);
        ASSERT_TRUE(IsDropped(session, IDC_EFFECT));
        PressKey(session, IDC_EFFECT, VK_HOME);
        PressKey(session, IDC_EFFECT, VK_DOWN);
        ASSERT_EQ(session.SelectionOf(IDC_EFFECT), 1);
        EXPECT_TRUE(session.IsShown(IDC_NORMALIZE_DISTRIBUTED));
        EXPECT_FALSE(session.IsShown(IDC_EMBOSS_DEPTH));
        EXPECT_THAT(session.Events(), Not(Contains("preview")));
        PressKey(session, IDC_EFFECT, closingKey);
        ASSERT_TRUE(session.IsOpen());
        ASSERT_FALSE(IsDropped(session, IDC_EFFECT));
        const int row = session.SelectionOf(IDC_EFFECT);
        EXPECT_EQ(session.IsShown(IDC_NORMALIZE_DISTRIBUTED), row == 10) << closingKey;
        EXPECT_EQ(session.IsShown(IDC_EMBOSS_DEPTH), row == 1) << closingKey;
        session.Close();
        EXPECT_THAT(session.ConfigurationText(), HasSubstr("MainEffect = " + std::to_string(row) + "\r\n"))
            << closingKey;
    }
}

TEST(OpenLists, Preview_and_build_take_the_row_that_the_effect_list_shows) {
    FakeHost host;
    host.Serve(OneFrame());
    PluginSession session(host, WithConfiguration("MainEffect = 10\n"));
    session.Click(IDC_SELECT);
    const std::vector<COLORREF> before = session.DrawPreview(20, 20);
    MoveFocus(session, IDC_EFFECT);
    PressKey(session, IDC_EFFECT, VK_F4);
    PressKey(session, IDC_EFFECT, VK_HOME);
    PressKey(session, IDC_EFFECT, VK_DOWN);
    const std::vector<COLORREF> open = session.DrawPreview(20, 20);
    session.Command(IDC_TEST);
    ASSERT_TRUE(IsDropped(session, IDC_EFFECT));
    PressKey(session, IDC_EFFECT, VK_RETURN);
    ASSERT_EQ(session.SelectionOf(IDC_EFFECT), 1);
    EXPECT_NE(open, before);
    EXPECT_EQ(open, session.DrawPreview(20, 20));
    session.Command(IDC_TEST);
    const std::vector<std::vector<uint8_t>> frames = host.Frames();
    ASSERT_THAT(frames, SizeIs(2));
    EXPECT_EQ(frames[0], frames[1]);
}

TEST(OpenLists, Preview_and_build_take_the_row_that_a_panels_list_shows) {
    FakeHost host;
    host.Serve(OneFrame());
    PluginSession session(host, WithConfiguration("MainEffect = 5\nStyle010ChannelsEnable = 1\n"));
    session.Click(IDC_SELECT);
    const std::vector<COLORREF> before = session.DrawPreview(20, 20);
    MoveFocus(session, IDC_HSB_CHANNELS);
    session.ClearEvents();
    PressKey(session, IDC_HSB_CHANNELS, VK_F4);
    PressKey(session, IDC_HSB_CHANNELS, VK_END);
    ASSERT_TRUE(IsDropped(session, IDC_HSB_CHANNELS));
    ASSERT_EQ(session.SelectionOf(IDC_HSB_CHANNELS), 6);
    EXPECT_THAT(session.Events(), Not(Contains("preview")));
    const std::vector<COLORREF> open = session.DrawPreview(20, 20);
    session.Command(IDC_TEST);
    ASSERT_TRUE(IsDropped(session, IDC_HSB_CHANNELS));
    session.ClearEvents();
    PressKey(session, IDC_HSB_CHANNELS, VK_RETURN);
    EXPECT_THAT(session.Events(), Contains("preview"));
    EXPECT_NE(open, before);
    EXPECT_EQ(open, session.DrawPreview(20, 20));
    session.Command(IDC_TEST);
    const std::vector<std::vector<uint8_t>> frames = host.Frames();
    ASSERT_THAT(frames, SizeIs(2));
    EXPECT_EQ(frames[0], frames[1]);
}

}  // namespace
}  // namespace kfx::test
