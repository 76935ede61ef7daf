// SPDX-License-Identifier: MIT
// The keyboard in the plug-in's window: what Enter presses.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "resources/resource_ids.h"
#include "tests/support/animation_blocks.h"
#include "tests/support/pictures.h"
#include "tests/windows/support/plugin_session.h"
#include "tests/windows/support/waiting.h"

namespace kfx::test {
namespace {

using testing::ElementsAre;
using testing::SizeIs;

SessionOptions WithConfiguration(const std::string& text) {
    SessionOptions options;
    options.configuration = text;
    return options;
}

std::vector<uint8_t> OneFrame() { return MakeAnimationBlock({{BytesOf(RandomPicture(5, 3, 1).handle), {}}}); }

HWND FocusNow(const PluginSession& session) {
    GUITHREADINFO info = {};
    info.cbSize = sizeof info;
    GetGUIThreadInfo(GetWindowThreadProcessId(session.Window(), nullptr), &info);
    return info.hwndFocus;
}

int FocusedControl(const PluginSession& session) {
    HWND focus = nullptr;
    WaitFor([&] { return (focus = FocusNow(session)) != nullptr; });
    return GetDlgCtrlID(focus);
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

void MoveFocus(PluginSession& session, int control) {
    SendMessageA(session.Window(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(session.Control(control)), TRUE);
    ASSERT_EQ(FocusedControl(session), control);
}

// As the keyboard sends it, to the control with the focus.
void PressKey(PluginSession& session, WPARAM key) {
    PostMessageA(session.Control(FocusedControl(session)), WM_KEYDOWN, key, 1);
    session.Settle();
}

TEST(Keys, enter_presses_select_until_there_is_a_source_and_then_build) {
    for (const uint32_t style : {0u, 1u, 3u}) {
        FakeHost host;
        host.context.buttonStyle = style;
        host.Serve(OneFrame());
        PluginSession session(host);
        EXPECT_EQ(FocusedControl(session), IDC_SELECT);
        EXPECT_THAT(DefaultButtons(session), ElementsAre(IDC_SELECT));
        PressKey(session, VK_RETURN);
        EXPECT_THAT(host.Requests(HostRequest::OpenAnimation), SizeIs(1));
        EXPECT_EQ(FocusedControl(session), IDC_BUILD);
        EXPECT_THAT(DefaultButtons(session), ElementsAre(IDC_BUILD));
        PressKey(session, VK_RETURN);
        EXPECT_FALSE(session.IsOpen());
        EXPECT_THAT(host.Requests(HostRequest::NewTask), SizeIs(1));
    }
}

TEST(Keys, a_restored_source_gives_build_the_focus_and_enter) {
    for (const uint32_t style : {0u, 2u}) {
        FakeHost host;
        host.context.buttonStyle = style;
        host.Serve(OneFrame());
        PluginSession session(host, WithConfiguration("FileNamePath = " + PluginPath() + "\n"));
        EXPECT_EQ(FocusedControl(session), IDC_BUILD);
        EXPECT_THAT(DefaultButtons(session), ElementsAre(IDC_BUILD));
        PressKey(session, VK_RETURN);
        EXPECT_FALSE(session.IsOpen());
        EXPECT_THAT(host.Requests(HostRequest::NewTask), SizeIs(1));
    }
}

TEST(Keys, enter_in_a_check_box_presses_select_until_there_is_a_source) {
    FakeHost host;
    host.Serve(OneFrame());
    PluginSession session(host);
    host.Refuse(HostRequest::OpenAnimation, 1);
    for (const size_t asked : {1u, 2u}) {
        MoveFocus(session, IDC_DITHER);
        EXPECT_THAT(DefaultButtons(session), ElementsAre(IDC_SELECT));
        PressKey(session, VK_RETURN);
        EXPECT_THAT(host.Requests(HostRequest::OpenAnimation), SizeIs(asked));
    }
    MoveFocus(session, IDC_DITHER);
    EXPECT_THAT(DefaultButtons(session), ElementsAre(IDC_BUILD));
    PressKey(session, VK_RETURN);
    EXPECT_FALSE(session.IsOpen());
}

TEST(Keys, a_control_that_is_disabled_hands_on_focus_and_enter_together) {
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
    EXPECT_EQ(FocusedControl(session), IDC_SELECT);
    EXPECT_THAT(DefaultButtons(session), ElementsAre(IDC_SELECT));
}

}  // namespace
}  // namespace kfx::test
