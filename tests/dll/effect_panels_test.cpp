// SPDX-License-Identifier: MIT
// The effects' panels in the plug-in's window: what is cloned, where it stands, what is shown when.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "effects/effect_table.h"
#include "resources/resource_ids.h"
#include "tests/dll/support/window_reading.h"
#include "tests/dll/support/window_test.h"
#include "tests/support/wait_for.h"

namespace kfx::test {
namespace {

struct Child {
    HWND window;
    int id;
    bool shown;
};

std::vector<Child> ChildrenOf(HWND window) {
    std::vector<Child> children;
    for (HWND child = GetWindow(window, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
        const bool shown = (GetWindowLongPtrA(child, GWL_STYLE) & WS_VISIBLE) != 0;
        children.push_back({child, GetDlgCtrlID(child), shown});
    }
    return children;
}

bool IsPanelControl(int id) { return (id >= 100 && id <= 1198) || (id >= 10100 && id <= 11198); }

std::set<int> ShownPanelControls(HWND window) {
    std::set<int> shown;
    for (const Child& child : ChildrenOf(window))
        if (child.shown && IsPanelControl(child.id)) shown.insert(child.id);
    return shown;
}

std::set<int> IdsOf(const Effect& effect) {
    std::set<int> ids;
    for (const uint32_t* id = effect.controls.ids; *id; ++id) ids.insert(static_cast<int>(*id));
    return ids;
}

// Of row `row` of the effect list.
std::set<int> IdsAt(size_t row) { return IdsOf(*EffectAt(row)); }

RECT PlaceIn(HWND window, HWND child) {
    RECT place;
    GetWindowRect(child, &place);
    MapWindowPoints(nullptr, window, reinterpret_cast<POINT*>(&place), 2);
    return place;
}

class Panels : public WindowTest {};

TEST_F(Panels, Each_effect_shows_its_own_controls_and_no_others) {
    for (size_t row = 0; row < EffectCount(); ++row) {
        session.Choose(IDC_EFFECT, static_cast<int>(row));
        EXPECT_EQ(ShownPanelControls(session.Window()), IdsAt(row)) << EffectAt(row)->name;
    }
}

TEST_F(Panels, The_windows_own_controls_are_never_touched) {
    std::set<std::pair<int, bool>> before;
    for (const Child& child : ChildrenOf(session.Window()))
        if (!IsPanelControl(child.id)) before.insert({child.id, child.shown});
    // One that the user has hidden stays hidden.
    ShowWindow(session.Control(IDC_LOGO), SW_HIDE);
    before.erase({IDC_LOGO, true});
    before.insert({IDC_LOGO, false});
    for (const int row : {0, 15, 9, 5}) {
        session.Choose(IDC_EFFECT, row);
        std::set<std::pair<int, bool>> after;
        for (const Child& child : ChildrenOf(session.Window()))
            if (!IsPanelControl(child.id)) after.insert({child.id, child.shown});
        EXPECT_EQ(after, before) << row;
    }
}

TEST_F(Panels, Identifiers_are_unique_and_complete) {
    std::multiset<int> found, expected;
    for (const Child& child : ChildrenOf(session.Window()))
        if (IsPanelControl(child.id)) found.insert(child.id);
    for (size_t row = 0; row < EffectCount(); ++row)
        for (const int id : IdsAt(row)) expected.insert(id);
    EXPECT_EQ(found, expected);
}

// Sliders, labels and captions stand in rows of 12 dialog units from 216 on.
TEST_F(Panels, Sliders_stand_on_the_grid_with_label_and_caption) {
    int sliders = 0;
    for (size_t row = 0; row < EffectCount(); ++row) {
        const Effect& effect = *EffectAt(row);
        int y = 216;
        for (const int id : IdsOf(effect)) {
            const HWND slider = session.Control(id);
            if (ClassOf(slider) != "scrollbar") continue;
            const std::pair<HWND, RECT> parts[] = {{slider, {80, y, 80 + 168, y + 9}},
                                                   {session.Control(id + 1), {252, y, 252 + 32, y + 10}},
                                                   {session.Control(id + 2), {16, y, 16 + 60, y + 9}}};
            for (const auto& [control, units] : parts) {
                RECT expected = units;
                MapDialogRect(session.Window(), &expected);
                const RECT place = PlaceIn(session.Window(), control);
                EXPECT_EQ(place.left, expected.left) << effect.name << " " << GetDlgCtrlID(control);
                EXPECT_EQ(place.right, expected.right) << effect.name << " " << GetDlgCtrlID(control);
                // The grid's row may start a pixel off where dialog units do not divide evenly.
                EXPECT_NEAR(place.top, expected.top, 1) << effect.name << " " << GetDlgCtrlID(control);
                EXPECT_NEAR(place.bottom, expected.bottom, 1) << effect.name << " " << GetDlgCtrlID(control);
            }
            y += 12;
            ++sliders;
        }
    }
    EXPECT_GE(sliders, 36);
}

// Measured in a panel made from the same template.
TEST_F(Panels, A_drop_down_list_is_200_pixels_taller_than_its_template_and_nothing_else_is) {
    const HMODULE library = GetModuleHandleA("kfxplug1.dll");
    for (size_t row = 0; row < EffectCount(); ++row) {
        const Effect& effect = *EffectAt(row);
        const HWND panel = CreateDialogParamA(
            library, MAKEINTRESOURCEA(effect.panel), nullptr,
            [](HWND, UINT, WPARAM, LPARAM) -> INT_PTR { return FALSE; }, 0);
        ASSERT_TRUE(panel) << effect.name;
        char caption[40] = "";
        GetWindowTextA(panel, caption, sizeof caption);
        EXPECT_STREQ(caption, "Kestrel #1");
        for (const Child& original : ChildrenOf(panel)) {
            const HWND clone = session.Control(original.id);
            const RECT wanted = PlaceIn(panel, original.window);
            const RECT place = session.CreatedControls()[original.id];
            const int more = ClassOf(original.window) == "combobox" ? 200 : 0;
            EXPECT_EQ(place.left, wanted.left) << original.id;
            EXPECT_EQ(place.top, wanted.top) << original.id;
            EXPECT_EQ(place.right, wanted.right) << original.id;
            EXPECT_EQ(place.bottom, wanted.bottom + more) << original.id;
            EXPECT_EQ(ClassOf(clone), ClassOf(original.window)) << original.id;
        }
        DestroyWindow(panel);
    }
}

TEST_F(Panels, Sliders_take_their_range_from_their_text_and_their_position_from_the_setting) {
    int least = -1, most = -1;
    GetScrollRange(session.Control(IDC_EMBOSS_DEPTH), SB_CTL, &least, &most);
    EXPECT_EQ(least, 15);
    EXPECT_EQ(most, 50);
    EXPECT_EQ(session.TextOf(IDC_EMBOSS_DEPTH), "15,50,25");
    EXPECT_EQ(session.PositionOf(IDC_EMBOSS_DEPTH), 15) << "the setting wins over the template's 25";
    EXPECT_EQ(session.TextOf(IDC_EMBOSS_DEPTH + 1), "15");
    EXPECT_EQ(session.PositionOf(IDC_SWIRL_ANGLE), 1485);
    EXPECT_EQ(session.TextOf(IDC_SWIRL_ANGLE + 1), "45");
}

TEST(PanelsInOwnWindow, A_setting_outside_the_range_stands_at_its_end) {
    FakeHost host;
    SessionOptions options;
    options.configuration = "Style000Depth = 4000\nStyle000Radius = 0\n";
    PluginSession session(host, options);
    EXPECT_EQ(session.PositionOf(IDC_EMBOSS_DEPTH), 50);
    EXPECT_EQ(session.PositionOf(IDC_EMBOSS_RADIUS), 4);
    EXPECT_EQ(session.TextOf(IDC_EMBOSS_DEPTH + 1), "4000") << "the label shows the setting";
}

TEST(PanelsInOwnWindow, Check_boxes_and_lists_start_from_their_settings) {
    FakeHost host;
    SessionOptions options;
    options.configuration = "Style010HSBEnable = 0\nStyle010ChannelsEnable = 1\nStyle010ChannelsOption = 4\n";
    PluginSession session(host, options);
    EXPECT_FALSE(session.IsChecked(IDC_HSB_ENABLE));
    EXPECT_TRUE(session.IsChecked(IDC_HSB_CHANNELS_ENABLE));
    EXPECT_EQ(session.SelectionOf(IDC_HSB_CHANNELS), 4);
    EXPECT_THAT(session.ItemsOf(IDC_HSB_CHANNELS),
                testing::ElementsAre("Red - Blue", "Red - Green", "Green - Blue", "Left 1", "Left 2",
                                     "Right 1", "Right 2"));
}

// "Invert colors" is bound like a slider: its setting is not shown, and a click stores its scroll position,
// which is 0.
TEST(PanelsInOwnWindow, Invert_colors_opens_unchecked_and_a_click_stores_0) {
    FakeHost host;
    SessionOptions options;
    options.configuration = "Style010InvertColors = 1\n";
    PluginSession session(host, options);
    EXPECT_FALSE(session.IsChecked(IDC_HSB_INVERT));
    session.Choose(IDC_EFFECT, 5);
    session.Click(IDC_HSB_INVERT);
    EXPECT_TRUE(session.IsChecked(IDC_HSB_INVERT));
    session.Close();
    EXPECT_THAT(session.ConfigurationText(), testing::HasSubstr("Style010InvertColors = 0\r\n"));
}

class EffectList : public WindowTest {};

TEST_F(EffectList, Choosing_another_effect_repaints_the_preview_and_is_remembered) {
    session.ClearEvents();
    session.Choose(IDC_EFFECT, 6);
    EXPECT_THAT(session.Events(), testing::Contains("preview"));
    session.Close();
    EXPECT_THAT(session.ConfigurationText(), testing::HasSubstr("MainEffect = 6\r\n"));
}

TEST_F(EffectList, Choosing_the_current_effect_changes_nothing) {
    session.ClearEvents();
    session.Choose(IDC_EFFECT, 14);
    EXPECT_THAT(session.Events(), testing::IsEmpty());
    EXPECT_EQ(ShownPanelControls(session.Window()), IdsAt(14));
}

TEST_F(EffectList, Only_closing_up_chooses) {
    SendMessageA(session.Control(IDC_EFFECT), CB_SETCURSEL, 6, 0);
    session.Command(IDC_EFFECT, CBN_SELCHANGE);
    EXPECT_EQ(ShownPanelControls(session.Window()), IdsAt(14));
}

TEST_F(EffectList, No_selection_counts_as_the_first_row) {
    session.Choose(IDC_EFFECT, -1);
    EXPECT_EQ(ShownPanelControls(session.Window()), IdsAt(0));
    session.Close();
    EXPECT_THAT(session.ConfigurationText(), testing::HasSubstr("MainEffect = 0\r\n"));
}

// How many pixels on the screen are not the window's own grey below the panel's controls.
int MarksBelowPanel(const PluginSession& session, int lastControl) {
    const HWND window = session.Window();
    RECT room = {80, 216, 286, 312};
    MapDialogRect(window, &room);
    if (lastControl) room.top = PlaceIn(window, session.Control(lastControl)).bottom + 2;
    const HDC dc = GetDC(window);
    int marks = 0;
    for (int y = room.top; y < room.bottom; ++y)
        for (int x = room.left; x < room.right; ++x)
            marks += GetPixel(dc, x, y) != GetSysColor(COLOR_BTNFACE);
    ReleaseDC(window, dc);
    return marks;
}

// A sentence says what the effect does.
TEST_F(Panels, A_small_panel_leaves_room_for_a_sentence_and_a_full_one_for_none) {
    constexpr int kBump = 0, kEmboss = 1, kRipple = 15;
    session.Choose(IDC_EFFECT, kBump);
    EXPECT_TRUE(WaitFor([&] { return MarksBelowPanel(session, 0) > 100; })) << "Bump";
    session.Choose(IDC_EFFECT, kRipple);
    EXPECT_TRUE(WaitFor([&] { return MarksBelowPanel(session, IDC_RIPPLE_DISSIPATE) == 0; })) << "Ripple";
    session.Choose(IDC_EFFECT, kEmboss);
    EXPECT_TRUE(WaitFor([&] { return MarksBelowPanel(session, IDC_EMBOSS_DEPTH) > 100; })) << "Emboss";
}

}  // namespace
}  // namespace kfx::test
