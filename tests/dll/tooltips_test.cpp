// SPDX-License-Identifier: MIT
// The tooltips of the plug-in's window: what they say, and that the pointer calls them up.
#include <windows.h>

#include <commctrl.h>
#include <gtest/gtest.h>

#include "resources/resource_ids.h"
#include "tests/dll/support/window_reading.h"
#include "tests/dll/support/window_test.h"
#include "tests/support/wait_for.h"
#include "window/control_texts.h"

namespace kfx::test {
namespace {

HWND TooltipsOf(HWND window) {
    HWND found = nullptr;
    EnumThreadWindows(
        GetWindowThreadProcessId(window, nullptr),
        [](HWND candidate, LPARAM data) -> BOOL {
            if (ClassOf(candidate) != TOOLTIPS_CLASSA) return TRUE;
            *reinterpret_cast<HWND*>(data) = candidate;
            return FALSE;
        },
        reinterpret_cast<LPARAM>(&found));
    return found;
}

bool IsGroupBox(HWND control) {
    return ClassOf(control) == "button" &&
           (GetWindowLongPtrA(control, GWL_STYLE) & BS_TYPEMASK) == BS_GROUPBOX;
}

class Tooltips : public WindowTest {
protected:
    Tooltips() : WindowTest(WithConfiguration("MainEffect = 1\n")), tooltips(TooltipsOf(session.Window())) {}

    // Empty: there is no such tool. The 8-bit message gives 79 letters at most.
    std::string TipOf(UINT flags, UINT_PTR id) const {
        wchar_t tip[kTipBytes] = L"";
        TTTOOLINFOW tool = {};
        tool.cbSize = TTTOOLINFOW_V2_SIZE;
        tool.uFlags = flags;
        tool.hwnd = session.Window();
        tool.uId = id;
        tool.lpszText = tip;
        SendMessageW(tooltips, TTM_GETTEXTW, kTipBytes, reinterpret_cast<LPARAM>(&tool));
        std::string text;
        for (const wchar_t* letter = tip; *letter; ++letter) text += static_cast<char>(*letter);
        return text;
    }
    std::string TipOf(HWND control) const { return TipOf(TTF_IDISHWND, reinterpret_cast<UINT_PTR>(control)); }

    void PointAt(int id) const {
        RECT area = {};
        GetWindowRect(session.Control(id), &area);
        SetCursorPos((area.left + area.right) / 2, (area.top + area.bottom) / 2);
    }

    // The tip that is shown; empty: none.
    std::string ShownTip() const {
        TTTOOLINFOA tool = {};
        tool.cbSize = TTTOOLINFOA_V2_SIZE;
        if (!IsWindowVisible(tooltips)) return "";
        if (!SendMessageA(tooltips, TTM_GETCURRENTTOOLA, 0, reinterpret_cast<LPARAM>(&tool))) return "";
        return TipOf(tool.uFlags, tool.uId);
    }

    void ExpectTipOver(int id, const std::string& tip) const {
        PointAt(id);
        WaitFor([&] { return ShownTip() == tip; });
        EXPECT_EQ(ShownTip(), tip) << id;
    }

    const HWND tooltips;
};

TEST_F(Tooltips, Every_control_that_can_be_used_has_one) {
    ASSERT_TRUE(tooltips);
    size_t controls = 0;
    for (HWND child = GetWindow(session.Window(), GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
        const int id = GetDlgCtrlID(child);
        if (ClassOf(child) == "static" || IsGroupBox(child)) continue;
        ++controls;
        const ControlText* text = FindControlText(id);
        ASSERT_TRUE(text) << id;
        char tip[kTipBytes];
        WriteTip(*text, TextOf(child).c_str(), tip, sizeof tip);
        EXPECT_EQ(TipOf(child), tip);
        if (id >= FIRST_PANEL_CONTROL) continue;
        EXPECT_EQ(TipOf(0, static_cast<UINT_PTR>(id)), tip) << "while it is disabled";
    }
    EXPECT_GT(controls, 50u);
    EXPECT_EQ(TipOf(session.Control(IDC_EMBOSS_RADIUS)),
              "Width of the edges, in tenths of a pixel, 4 to 45.");
}

TEST_F(Tooltips, The_pointer_calls_them_up_over_controls_enabled_or_not) {
    ASSERT_TRUE(tooltips);
    ASSERT_FALSE(session.IsEnabled(IDC_BUILD));
    ExpectTipOver(IDC_EMBOSS_RADIUS, TipOf(session.Control(IDC_EMBOSS_RADIUS)));
    ExpectTipOver(IDC_BUILD, TipOf(session.Control(IDC_BUILD)));
    ExpectTipOver(IDC_PREVIEW, TipOf(session.Control(IDC_PREVIEW)));
    SetCursorPos(0, 0);
    EXPECT_TRUE(WaitFor([this] { return !IsWindowVisible(tooltips); }));
}

TEST_F(Tooltips, Leave_the_controls_their_own_procedures) {
    ASSERT_TRUE(tooltips);
    const LRESULT count = SendMessageA(tooltips, TTM_GETTOOLCOUNT, 0, 0);
    EXPECT_GT(count, 50);
    for (LRESULT i = 0; i < count; ++i) {
        char tip[kTipBytes] = "";
        TTTOOLINFOA tool = {};
        tool.cbSize = TTTOOLINFOA_V2_SIZE;
        tool.lpszText = tip;
        ASSERT_TRUE(
            SendMessageA(tooltips, TTM_ENUMTOOLSA, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&tool)));
        EXPECT_FALSE(tool.uFlags & TTF_SUBCLASS) << tip;
    }
}

TEST_F(Tooltips, Go_with_the_window) {
    ASSERT_TRUE(tooltips);
    session.Close();
    EXPECT_FALSE(IsWindow(tooltips));
}

}  // namespace
}  // namespace kfx::test
