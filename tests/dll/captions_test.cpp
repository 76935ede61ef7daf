// SPDX-License-Identifier: MIT
// The right-aligned texts of the plug-in's window: drawn whole, in the window's colours.
#include <gtest/gtest.h>

#include <algorithm>

#include "effects/effect_table.h"
#include "resources/resource_ids.h"
#include "tests/dll/support/window_reading.h"
#include "tests/dll/support/window_test.h"

namespace kfx::test {
namespace {

constexpr UINT kWindowMessage = 1224;  // word 0 fills the effect list

struct Drawn {
    int width;
    std::vector<COLORREF> pixels;
};

Drawn DrawCaption(HWND caption) {
    RECT area;
    GetClientRect(caption, &area);
    const auto draw = [caption](HDC dc) {
        SendMessageA(caption, WM_PRINTCLIENT, reinterpret_cast<WPARAM>(dc), PRF_CLIENT);
    };
    return {area.right, Draw(area.right, area.bottom, draw)};
}

// The same text from the left edge on, with room to spare.
Drawn DrawWhole(HWND caption) {
    constexpr int kWidth = 300, kHeight = 40;
    const auto draw = [caption](HDC dc) {
        const RECT area = {0, 0, kWidth, kHeight};
        RECT place = {20, 0, kWidth, kHeight};
        FillRect(dc, &area, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH)));
        const HGDIOBJ before =
            SelectObject(dc, reinterpret_cast<HFONT>(SendMessageA(caption, WM_GETFONT, 0, 0)));
        DrawTextA(dc, TextOf(caption).c_str(), -1, &place, DT_SINGLELINE | DT_NOPREFIX);
        SelectObject(dc, before);
    };
    return {kWidth, Draw(kWidth, kHeight, draw)};
}

struct Columns {
    int first;
    int last;
};

// Those in which anything but the colour of the first pixel is drawn.
Columns ColumnsOf(const Drawn& drawn) {
    Columns columns = {drawn.width, -1};
    for (size_t i = 0; i < drawn.pixels.size(); ++i) {
        if (drawn.pixels[i] == drawn.pixels[0]) continue;
        const int column = static_cast<int>(i) % drawn.width;
        columns.first = std::min(columns.first, column);
        columns.last = std::max(columns.last, column);
    }
    return columns;
}

bool HasColor(const Drawn& drawn, COLORREF color) {
    return std::find(drawn.pixels.begin(), drawn.pixels.end(), color) != drawn.pixels.end();
}

std::vector<HWND> CaptionsOf(HWND window) {
    std::vector<HWND> captions;
    for (HWND child = GetWindow(window, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
        const LONG_PTR style = GetWindowLongPtrA(child, GWL_STYLE);
        if (ClassOf(child) == "static" && (style & SS_TYPEMASK) == SS_RIGHT) captions.push_back(child);
    }
    return captions;
}

class Captions : public WindowTest {};

TEST_F(Captions, All_are_drawn_whole_and_end_left_of_their_edge) {
    const std::vector<HWND> captions = CaptionsOf(session.Window());
    ASSERT_GE(captions.size(), 36u);
    for (const HWND caption : captions) {
        const Drawn drawn = DrawCaption(caption);
        const Columns seen = ColumnsOf(drawn), whole = ColumnsOf(DrawWhole(caption));
        EXPECT_EQ(seen.last - seen.first, whole.last - whole.first) << TextOf(caption);
        EXPECT_GT(seen.last, seen.first) << TextOf(caption);
        EXPECT_LT(seen.last, drawn.width - 1) << TextOf(caption);
    }
}

TEST_F(Captions, One_that_is_disabled_is_grey) {
    const HWND caption = session.Control(IDC_PALETTE_CAPTION);
    const COLORREF text = GetSysColor(COLOR_WINDOWTEXT), grey = GetSysColor(COLOR_GRAYTEXT);
    ASSERT_NE(text, grey);
    EXPECT_TRUE(HasColor(DrawCaption(caption), text));
    EnableWindow(caption, FALSE);
    EXPECT_TRUE(HasColor(DrawCaption(caption), grey));
    EXPECT_FALSE(HasColor(DrawCaption(caption), text));
}

TEST_F(Captions, Another_text_is_drawn_in_their_place) {
    const HWND caption = session.Control(IDC_EFFECT_CAPTION);
    const Drawn before = DrawCaption(caption);
    SetWindowTextA(caption, "i");
    const Columns columns = ColumnsOf(DrawCaption(caption));
    EXPECT_LT(columns.last - columns.first, 5);
    SetWindowTextA(caption, "Effect");
    EXPECT_EQ(DrawCaption(caption).pixels, before.pixels);
}

TEST_F(Captions, Filling_the_effect_list_again_leaves_them_as_they_are) {
    const HWND caption = session.Control(IDC_EFFECT_CAPTION);
    const Drawn before = DrawCaption(caption);
    SendMessageA(session.Window(), kWindowMessage, 0, 0);
    EXPECT_EQ(DrawCaption(caption).pixels, before.pixels);
    session.Choose(IDC_EFFECT, 5);
    EXPECT_TRUE(IsWindowVisible(session.Control(IDC_HSB_HUE + 2)));
}

}  // namespace
}  // namespace kfx::test
