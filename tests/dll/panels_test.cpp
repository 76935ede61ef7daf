// SPDX-License-Identifier: MIT
// The effects' panels as they stand in the DLL, compared with the effect table.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <string>
#include <vector>

#include "effects/effect_table.h"
#include "tests/dll/support/plugin_session.h"
#include "tests/dll/support/window_reading.h"

namespace kfx {
namespace {

using test::ClassOf;
using test::TextOf;

INT_PTR CALLBACK DoNothing(HWND, UINT, WPARAM, LPARAM) { return FALSE; }

// A panel on its own, hidden.
struct Panel {
    explicit Panel(const Effect& effect)
        : module(LoadLibraryA(test::PluginPath().c_str())),
          window(CreateDialogParamA(module, MAKEINTRESOURCEA(effect.panel), nullptr, DoNothing, 0)) {}
    ~Panel() {
        DestroyWindow(window);
        FreeLibrary(module);
    }
    Panel(const Panel&) = delete;
    Panel& operator=(const Panel&) = delete;

    HWND Control(uint32_t id) const { return GetDlgItem(window, static_cast<int>(id)); }

    // A place and size in pixels, as the system makes it of dialog units.
    std::vector<LONG> Pixels(LONG x, LONG y, LONG width, LONG height) const {
        RECT place = {x, y, width, height};
        MapDialogRect(window, &place);
        return {place.left, place.top, place.right, place.bottom};
    }

    std::vector<LONG> PlaceOf(HWND control) const {
        RECT place;
        GetWindowRect(control, &place);
        MapWindowPoints(nullptr, window, reinterpret_cast<POINT*>(&place), 2);
        return {place.left, place.top, place.right - place.left, place.bottom - place.top};
    }

    const HMODULE module;
    const HWND window;
};

class Panels : public testing::TestWithParam<size_t> {
protected:
    const Effect& effect = *EffectAt(GetParam());
    const Panel panel{effect};
};

TEST_P(Panels, Are_the_size_of_the_window_and_carry_their_caption) {
    ASSERT_NE(panel.window, nullptr);
    EXPECT_EQ(TextOf(panel.window), "Kestrel #1");
    RECT client;
    GetClientRect(panel.window, &client);
    EXPECT_EQ((std::vector<LONG>{client.left, client.top, client.right, client.bottom}),
              panel.Pixels(0, 0, 480, 328));
}

TEST_P(Panels, Hold_exactly_the_controls_that_the_effect_lists) {
    std::vector<uint32_t> listed, present;
    for (const uint32_t* id = effect.controls.ids; *id; ++id) listed.push_back(*id);
    for (HWND child = GetWindow(panel.window, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
        present.push_back(static_cast<uint32_t>(GetDlgCtrlID(child)));
    }
    EXPECT_THAT(present, testing::UnorderedElementsAreArray(listed));
}

TEST_P(Panels, Have_a_slider_in_each_row_with_its_range_label_and_caption) {
    // Rows stand in the order of the ids, 12 units apart.
    std::vector<const EffectControl*> sliders;
    for (size_t i = 0; i < effect.controls.count; ++i) {
        if (effect.controls.rows[i].kind == ControlKind::Slider) sliders.push_back(&effect.controls.rows[i]);
    }
    std::sort(sliders.begin(), sliders.end(), [](const auto* a, const auto* b) { return a->id < b->id; });
    LONG y = 216;
    for (const EffectControl* row : sliders) {
        const HWND slider = panel.Control(row->id), label = panel.Control(row->id + 1u),
                   caption = panel.Control(row->id + 2u);
        EXPECT_EQ(ClassOf(slider), "scrollbar");
        EXPECT_EQ(TextOf(slider), row->text);
        EXPECT_EQ(GetWindowLongA(slider, GWL_STYLE) & SBS_VERT, 0);
        EXPECT_EQ(panel.PlaceOf(slider), panel.Pixels(80, y, 168, 9));
        EXPECT_EQ(ClassOf(label), "static");
        EXPECT_EQ(TextOf(label), "");
        // The dialog manager turns a template's border into a sunken edge.
        EXPECT_NE(GetWindowLongA(label, GWL_EXSTYLE) & WS_EX_CLIENTEDGE, 0);
        EXPECT_EQ(panel.PlaceOf(label), panel.Pixels(252, y, 32, 10));
        EXPECT_EQ(ClassOf(caption), "static");
        EXPECT_EQ(TextOf(caption).back(), ':');
        EXPECT_EQ(GetWindowLongA(caption, GWL_STYLE) & SS_TYPEMASK, SS_RIGHT);
        EXPECT_EQ(panel.PlaceOf(caption), panel.Pixels(16, y, 60, 9));
        y += 12;
    }
}

TEST_P(Panels, Name_their_controls) {
    for (size_t i = 0; i < effect.controls.count; ++i) {
        const EffectControl& row = effect.controls.rows[i];
        SCOPED_TRACE(row.id);
        switch (row.kind) {
            case ControlKind::Slider:
                EXPECT_EQ(TextOf(panel.Control(row.id + 1u)), "") << "the value's label";
                EXPECT_EQ(TextOf(panel.Control(row.id + 2u)), row.caption);
                break;
            case ControlKind::List:
                EXPECT_EQ(TextOf(panel.Control(row.id + 1u)), row.caption);
                break;
            case ControlKind::CheckBox:
            case ControlKind::SliderBox:
                EXPECT_EQ(TextOf(panel.Control(row.id)), row.text);
                break;
        }
    }
}

TEST_P(Panels, Keep_their_controls_from_touching_each_other) {
    std::vector<HWND> children;
    for (HWND child = GetWindow(panel.window, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
        children.push_back(child);
    }
    for (size_t i = 0; i < children.size(); ++i) {
        for (size_t k = i + 1; k < children.size(); ++k) {
            RECT a, b, common;
            GetWindowRect(children[i], &a);
            GetWindowRect(children[k], &b);
            EXPECT_FALSE(IntersectRect(&common, &a, &b))
                << GetDlgCtrlID(children[i]) << " and " << GetDlgCtrlID(children[k]);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Effects, Panels, testing::Range(size_t{0}, EffectCount()),
                         [](const auto& parameter) {
                             std::string name = EffectAt(parameter.param)->name;
                             name.erase(std::remove(name.begin(), name.end(), ' '), name.end());
                             return name;
                         });

}  // namespace
}  // namespace kfx
