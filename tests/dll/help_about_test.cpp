// SPDX-License-Identifier: MIT
// Help, the About box, message boxes and the looks of the push buttons.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "resources/resource_ids.h"
#include "tests/dll/support/window_reading.h"
#include "tests/dll/support/window_test.h"
#include "tests/support/wait_for.h"

namespace kfx::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr char kHelpFailed[] = "There has been an error displaying the Help document.";

class Help : public WindowTest {};

TEST_F(Help, Is_shown_by_the_host_at_its_first_topic) {
    host.ClearTranscript();
    session.Click(IDC_HELP_BUTTON);
    EXPECT_THAT(host.Transcript(),
                ElementsAre("REQ code=9 target=0 value=0 text=\"KFXPLUG1.HTML#PREFACE\" answer=1"));
    EXPECT_THAT(session.Messages(), IsEmpty());
}

TEST_F(Help, That_the_host_cannot_show_is_told) {
    host.Refuse(HostRequest::ShowHelp, 1);
    session.Click(IDC_HELP_BUTTON);
    EXPECT_THAT(session.Messages(), ElementsAre(kHelpFailed));
    EXPECT_TRUE(session.IsOpen());
}

TEST(About, Shows_title_version_help_and_web_page) {
    FakeHost host;
    PluginSession session(host);
    session.Press(IDC_ABOUT);
    const HWND about = session.WaitForBox("About");
    ASSERT_TRUE(about);
    EXPECT_EQ(TextOf(GetDlgItem(about, IDC_ABOUT_TITLE)), "Kestrel FX #1 Plugin");
    EXPECT_EQ(TextOf(GetDlgItem(about, IDC_ABOUT_TEXT)).find("Version 16.0a (revision 1)\n\n"), 0u)
        << TextOf(GetDlgItem(about, IDC_ABOUT_TEXT));
    EXPECT_EQ(TextOf(GetDlgItem(about, IDC_ABOUT_CLOSE)), "Close");
    EXPECT_EQ(TextOf(GetDlgItem(about, IDC_ABOUT_HELP)), "Help");
    EXPECT_EQ(TextOf(GetDlgItem(about, IDC_ABOUT_WEB_PAGE)), "Web page");
    host.ClearTranscript();
    SendMessageA(about, WM_COMMAND, IDC_ABOUT_HELP, 0);
    EXPECT_THAT(host.Transcript(), ElementsAre(HasSubstr("text=\"KFXPLUG1.HTML#ABOUT\"")));
    SendMessageA(about, WM_COMMAND, IDC_ABOUT_WEB_PAGE, 0);
    EXPECT_THAT(session.OpenedPages(), ElementsAre("open https://kestrel-fx.example/"));
    EXPECT_THAT(session.Messages(), IsEmpty());
    session.AnswerBrowser(32);
    SendMessageA(about, WM_COMMAND, IDC_ABOUT_WEB_PAGE, 0);
    EXPECT_THAT(session.Messages(), ElementsAre("There has been an error accessing your web browser."));
    EXPECT_TRUE(IsWindow(about));
    SendMessageA(about, WM_COMMAND, IDC_ABOUT_CLOSE, 0);
    EXPECT_TRUE(session.WaitUntilGone(about));
    EXPECT_TRUE(session.Settle());
}

// The place that a control's text takes in its font, enlarged by some pixels, when lines are as wide as
// given.
SIZE TextSize(HWND control, LONG enlarged, LONG width) {
    LOGFONTA font = {};
    GetObjectA(reinterpret_cast<HFONT>(SendMessageA(control, WM_GETFONT, 0, 0)), sizeof font, &font);
    font.lfHeight += enlarged;
    const HFONT larger = CreateFontIndirectA(&font);
    const HDC dc = GetDC(control);
    const HGDIOBJ previous = SelectObject(dc, larger);
    const std::string text = TextOf(control);
    RECT area = {0, 0, width, 0};
    DrawTextA(dc, text.c_str(), -1, &area, DT_CALCRECT | DT_WORDBREAK | DT_NOPREFIX);
    SelectObject(dc, previous);
    ReleaseDC(control, dc);
    DeleteObject(larger);
    return {area.right, area.bottom};
}

void ExpectRoom(HWND control, LONG enlarged, LONG width, LONG height) {
    const SIZE text = TextSize(control, enlarged, width);
    EXPECT_LE(text.cx, width) << "control " << GetDlgCtrlID(control) << ", font enlarged by " << enlarged;
    EXPECT_LE(text.cy, height) << "control " << GetDlgCtrlID(control) << ", font enlarged by " << enlarged;
}

// The texts have fonts of their own size, the box follows the system's: either may be a step off.
TEST(About, Has_room_for_fonts_a_step_larger_or_smaller) {
    constexpr LONG kStep = 2;  // pixels: from one size in points to the next
    FakeHost host;
    PluginSession session(host);
    session.Press(IDC_ABOUT);
    const HWND about = session.WaitForBox("About");
    ASSERT_TRUE(about);
    for (const int id : {IDC_ABOUT_TITLE, IDC_ABOUT_TEXT}) {
        const HWND control = GetDlgItem(about, id);
        RECT area;
        GetClientRect(control, &area);
        ExpectRoom(control, kStep, area.right, area.bottom);
        ExpectRoom(control, 0, area.right * 7 / 8, area.bottom * 7 / 8);  // in a box of 7 points for 8
    }
    SendMessageA(about, WM_COMMAND, IDC_ABOUT_CLOSE, 0);
    EXPECT_TRUE(session.WaitUntilGone(about));
}

TEST(MessageBoxes, Take_no_command_but_their_buttons) {
    FakeHost host;
    PluginSession session(host);
    session.HoldMessages(true);
    host.Refuse(HostRequest::ShowHelp, 1);
    session.Press(IDC_HELP_BUTTON);
    const HWND box = session.WaitForBox("Message");
    ASSERT_TRUE(box);
    EXPECT_EQ(TextOf(GetDlgItem(box, IDC_MESSAGE_TEXT)), kHelpFailed);
    EXPECT_EQ(TextOf(GetDlgItem(box, IDC_MESSAGE_OK)), "Ok");
    for (const int id : {9, 3, 101, 0}) {
        SendMessageA(box, WM_COMMAND, static_cast<WPARAM>(id), 0);
        EXPECT_TRUE(IsWindow(box)) << id;
    }
    RECT place;
    GetWindowRect(box, &place);
    EXPECT_EQ(place.left, (GetSystemMetrics(SM_CXSCREEN) - (place.right - place.left)) / 2);
    EXPECT_EQ(place.top, (GetSystemMetrics(SM_CYSCREEN) - (place.bottom - place.top)) / 2);
    SendMessageA(box, WM_COMMAND, IDC_MESSAGE_OK, 0);
    EXPECT_TRUE(session.WaitUntilGone(box));
    session.HoldMessages(false);
}

std::vector<COLORREF> DrawButton(PluginSession& session, int id, UINT state) {
    return session.DrawControl(id, 90, 26, state);
}

TEST(PushButtons, Are_the_systems_own_with_style_0_only) {
    for (const uint32_t style : {0u, 1u, 2u, 3u, 4u}) {
        FakeHost host;
        host.context.buttonStyle = style;
        PluginSession session(host);
        for (const int id :
             {IDC_BUILD, IDC_CANCEL, IDC_HELP_BUTTON, IDC_ABOUT, IDC_OPEN_SAVE, IDC_SELECT, IDC_TEST}) {
            const LONG_PTR type = GetWindowLongPtrA(session.Control(id), GWL_STYLE) & BS_TYPEMASK;
            EXPECT_EQ(type == BS_OWNERDRAW, style != 0) << style << ", button " << id;
        }
    }
}

TEST(PushButtons, Show_in_each_look_their_text_and_every_state) {
    std::vector<std::vector<COLORREF>> looks;
    for (const uint32_t style : {1u, 2u, 3u, 4u, 77u}) {
        FakeHost host;
        host.context.buttonStyle = style;
        PluginSession session(host);
        std::set<std::vector<COLORREF>> states;
        for (const UINT state : {0u, static_cast<UINT>(ODS_SELECTED), static_cast<UINT>(ODS_FOCUS),
                                 static_cast<UINT>(ODS_DISABLED)})
            states.insert(DrawButton(session, IDC_CANCEL, state));
        EXPECT_EQ(states.size(), 4u) << "normal, pushed, focused and disabled differ, style " << style;
        looks.push_back(DrawButton(session, IDC_CANCEL, 0));
        EXPECT_NE(looks.back(), DrawButton(session, IDC_HELP_BUTTON, 0)) << "another text, style " << style;
    }
    EXPECT_NE(looks[0], looks[1]);
    EXPECT_NE(looks[1], looks[2]);
    EXPECT_NE(looks[0], looks[2]);
    EXPECT_EQ(looks[3], looks[0]) << "above 3 is like 1";
    EXPECT_EQ(looks[4], looks[0]);
}

TEST(PushButtons, Show_in_each_look_the_default_and_the_one_under_the_pointer) {
    for (const uint32_t style : {1u, 2u, 3u}) {
        FakeHost host;
        host.context.buttonStyle = style;
        PluginSession session(host);
        const std::vector<COLORREF> normal = DrawButton(session, IDC_CANCEL, 0);
        const std::vector<COLORREF> hot = DrawButton(session, IDC_CANCEL, ODS_HOTLIGHT);
        EXPECT_NE(normal, hot) << style;
        RECT area = {};
        GetWindowRect(session.Control(IDC_CANCEL), &area);
        SetCursorPos((area.left + area.right) / 2, (area.top + area.bottom) / 2);
        EXPECT_TRUE(WaitFor([&] { return DrawButton(session, IDC_CANCEL, 0) == hot; })) << style;
        SetCursorPos(area.left - 3, area.top - 3);
        EXPECT_TRUE(WaitFor([&] { return DrawButton(session, IDC_CANCEL, 0) == normal; })) << style;
        SendMessageA(session.Control(IDC_CANCEL), BM_SETSTYLE, BS_DEFPUSHBUTTON, TRUE);
        EXPECT_NE(DrawButton(session, IDC_CANCEL, 0), normal) << style;
    }
}

TEST(PushButtons, Look_1_is_not_the_systems_button) {
    FakeHost host;
    host.context.buttonStyle = 1;
    PluginSession session(host);
    const std::vector<COLORREF> classic = Draw(90, 26, [&](HDC dc) {
        RECT area = {0, 0, 90, 26};
        FillRect(dc, &area, GetSysColorBrush(COLOR_BTNFACE));
        DrawEdge(dc, &area, EDGE_RAISED, BF_RECT);
    });
    const std::vector<COLORREF> button = DrawButton(session, IDC_CANCEL, 0);
    size_t differing = 0;
    for (size_t i = 0; i < button.size(); ++i) differing += button[i] != classic[i];
    EXPECT_GT(differing, button.size() / 2);
}

}  // namespace
}  // namespace kfx::test
