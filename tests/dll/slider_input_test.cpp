// SPDX-License-Identifier: MIT
// Sliders by wheel, keys and context menu, and the window's shortcuts.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "resources/resource_ids.h"
#include "tests/dll/support/window_test.h"

namespace kfx::test {
namespace {

using testing::SizeIs;

class SliderInput : public WindowTest {
protected:
    SliderInput() : WindowTest(WithConfiguration("MainEffect = 1\n")) {}

    void Focus(int id) {
        SendMessageA(session.Window(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(session.Control(id)), TRUE);
        session.Settle();
    }
    // With the pointer over the control.
    void Turn(int id, int delta) {
        RECT area = {};
        GetWindowRect(session.Control(id), &area);
        SendMessageA(session.Control(id), WM_MOUSEWHEEL, MAKEWPARAM(0, static_cast<WORD>(delta)),
                     MAKELPARAM(area.left + 30, area.top + 3));
        session.Settle();
    }
    void OpenMenu(int id) {
        SendMessageA(session.Window(), WM_CONTEXTMENU, reinterpret_cast<WPARAM>(session.Control(id)), -1);
        session.Settle();
    }
};

TEST_F(SliderInput, A_notch_of_the_wheel_is_a_line) {
    const int before = session.PositionOf(IDC_EMBOSS_RADIUS);
    Turn(IDC_EMBOSS_RADIUS, WHEEL_DELTA);
    EXPECT_EQ(session.PositionOf(IDC_EMBOSS_RADIUS), before + 1);
    EXPECT_EQ(session.TextOf(IDC_EMBOSS_RADIUS + 1), std::to_string(before + 1));
    Turn(IDC_EMBOSS_RADIUS, -2 * WHEEL_DELTA);
    EXPECT_EQ(session.PositionOf(IDC_EMBOSS_RADIUS), before - 1);
}

TEST_F(SliderInput, Parts_of_a_notch_add_up_until_the_wheel_turns_back) {
    const int before = session.PositionOf(IDC_EMBOSS_RADIUS);
    Turn(IDC_EMBOSS_RADIUS, WHEEL_DELTA / 2);
    EXPECT_EQ(session.PositionOf(IDC_EMBOSS_RADIUS), before);
    Turn(IDC_EMBOSS_RADIUS, WHEEL_DELTA / 2);
    EXPECT_EQ(session.PositionOf(IDC_EMBOSS_RADIUS), before + 1);
    Turn(IDC_EMBOSS_RADIUS, WHEEL_DELTA / 2);
    Turn(IDC_EMBOSS_RADIUS, -WHEEL_DELTA / 2);
    Turn(IDC_EMBOSS_RADIUS, WHEEL_DELTA / 2);
    EXPECT_EQ(session.PositionOf(IDC_EMBOSS_RADIUS), before + 1);
}

TEST_F(SliderInput, The_wheel_elsewhere_moves_the_slider_with_the_focus_or_none) {
    const int before = session.PositionOf(IDC_EMBOSS_DEPTH);
    Focus(IDC_EMBOSS_DEPTH);
    Turn(IDC_DITHER, WHEEL_DELTA);
    EXPECT_EQ(session.PositionOf(IDC_EMBOSS_DEPTH), before + 1);
    Focus(IDC_DITHER);
    Turn(IDC_DITHER, WHEEL_DELTA);
    EXPECT_EQ(session.PositionOf(IDC_EMBOSS_DEPTH), before + 1);
}

TEST_F(SliderInput, The_arrow_keys_are_lines) {
    const int before = session.PositionOf(IDC_EMBOSS_RADIUS);
    SendMessageA(session.Control(IDC_EMBOSS_RADIUS), WM_KEYDOWN, VK_RIGHT, 1);
    session.Settle();
    EXPECT_EQ(session.PositionOf(IDC_EMBOSS_RADIUS), before + 1);
    SendMessageA(session.Control(IDC_EMBOSS_RADIUS), WM_KEYDOWN, VK_LEFT, 1);
    session.Settle();
    EXPECT_EQ(session.PositionOf(IDC_EMBOSS_RADIUS), before);
}

TEST_F(SliderInput, The_context_menu_gives_the_default_of_the_panel) {
    session.AnswerMenu(IDM_SLIDER_DEFAULT);
    ASSERT_EQ(session.PositionOf(IDC_EMBOSS_DEPTH), 15);
    OpenMenu(IDC_EMBOSS_DEPTH);
    EXPECT_EQ(session.PositionOf(IDC_EMBOSS_DEPTH), 25);
    EXPECT_EQ(session.TextOf(IDC_EMBOSS_DEPTH + 1), "25");
    ASSERT_THAT(session.Menus(), SizeIs(1));
    ASSERT_THAT(session.Menus()[0].items, SizeIs(1));
    EXPECT_EQ(session.Menus()[0].items[0].second, "&Default: 25");
}

TEST_F(SliderInput, A_default_is_named_as_the_slider_shows_it) {
    OpenMenu(IDC_SWIRL_ANGLE);
    ASSERT_THAT(session.Menus(), SizeIs(1));
    EXPECT_EQ(session.Menus()[0].items[0].second, "&Default: -1395");
}

TEST_F(SliderInput, The_command_of_the_menu_alone_and_menus_of_other_controls_do_nothing) {
    session.Command(IDM_SLIDER_DEFAULT);
    OpenMenu(IDC_DITHER);
    OpenMenu(IDC_HSB_ENABLE);
    EXPECT_THAT(session.Menus(), SizeIs(0));
    EXPECT_EQ(session.PositionOf(IDC_EMBOSS_DEPTH), 15);
}

TEST_F(SliderInput, A_right_click_on_a_slider_opens_its_menu) {
    PostMessageA(session.Control(IDC_EMBOSS_DEPTH), WM_RBUTTONUP, 0, MAKELPARAM(5, 5));
    session.Settle();
    session.Settle();
    EXPECT_THAT(session.Menus(), SizeIs(1));
}

TEST_F(SliderInput, F1_opens_the_help) {
    HELPINFO help = {};
    help.cbSize = sizeof help;
    help.hItemHandle = session.Control(IDC_DITHER);
    SendMessageA(session.Control(IDC_DITHER), WM_HELP, 0, reinterpret_cast<LPARAM>(&help));
    session.Settle();
    EXPECT_THAT(host.Requests(HostRequest::ShowHelp), SizeIs(1));
}

TEST_F(SliderInput, F1_in_a_window_that_the_plugin_s_owns_opens_no_help) {
    HELPINFO help = {};
    help.cbSize = sizeof help;
    help.hItemHandle = GetDesktopWindow();
    SendMessageA(session.Window(), WM_HELP, 0, reinterpret_cast<LPARAM>(&help));
    session.Settle();
    EXPECT_THAT(host.Requests(HostRequest::ShowHelp), SizeIs(0));
}

// Holds Ctrl for the window's thread, as the keyboard would.
void PressWithCtrl(PluginSession& session, WPARAM key, LPARAM data = 1) {
    const DWORD thread = GetWindowThreadProcessId(session.Window(), nullptr);
    BYTE before[256] = {}, keys[256] = {};
    AttachThreadInput(GetCurrentThreadId(), thread, TRUE);
    GetKeyboardState(before);
    keys[VK_CONTROL] = 0x80;
    SetKeyboardState(keys);
    PostMessageA(session.Control(IDC_DITHER), WM_KEYDOWN, key, data);
    session.Settle();
    session.Settle();
    SetKeyboardState(before);
    AttachThreadInput(GetCurrentThreadId(), thread, FALSE);
}

TEST_F(SliderInput, Ctrl_O_and_Ctrl_S_open_and_save_a_document) {
    session.AnswerFileDialog("");
    PressWithCtrl(session, 'O');
    ASSERT_THAT(session.AskedPaths(), SizeIs(1));
    EXPECT_FALSE(session.AskedPaths()[0].toSave);
    PressWithCtrl(session, 'S');
    ASSERT_THAT(session.AskedPaths(), SizeIs(2));
    EXPECT_TRUE(session.AskedPaths()[1].toSave);
    PressWithCtrl(session, 'D');
    constexpr LPARAM kRepeated = LPARAM{1} << 30 | 1;
    PressWithCtrl(session, 'S', kRepeated);
    EXPECT_THAT(session.AskedPaths(), SizeIs(2));
}

}  // namespace
}  // namespace kfx::test
