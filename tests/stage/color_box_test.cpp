// SPDX-License-Identifier: MIT
// The box for colours, used by keys.
#include "stage/color_box.h"

#include <cstring>
#include <future>

#include "tests/stage/stage_program.h"

namespace kfx::test {
namespace {

using namespace stage;

struct ChoosingColor : ::testing::Test {
    uint8_t palette[3 * kOfferedColors] = {};
    uint32_t color = RGB(40, 40, 40);
    std::future<bool> answer;
    HWND box = nullptr;

    void Open() {
        for (size_t i = 0; i < sizeof palette; ++i) palette[i] = static_cast<uint8_t>(i / 3);
        answer = std::async(std::launch::async, [this] { return ChooseColorFrom(nullptr, palette, &color); });
        ASSERT_TRUE(WaitFor(
            [this] { return (box = DialogOf(GetCurrentProcessId(), "Choose a colour")) != nullptr; }));
        ASSERT_TRUE(WaitFor([this] { return IsAt(41); }));
    }

    bool IsAt(int number) const {
        return TextOf(GetDlgItem(box, kSwatches)).find("Colour " + std::to_string(number) + " of 256") == 0;
    }

    void PressKey(WPARAM key) const { PostMessageA(GetDlgItem(box, kSwatches), WM_KEYDOWN, key, 1); }
};

TEST_F(ChoosingColor, All_256_colours_are_reached_by_keys) {
    ASSERT_NO_FATAL_FAILURE(Open());
    PressKey(VK_END);
    EXPECT_TRUE(WaitFor([this] { return IsAt(256); }));
    PressKey(VK_UP);
    PressKey(VK_LEFT);
    EXPECT_TRUE(WaitFor([this] { return IsAt(239); }));
    EXPECT_EQ(TextOf(GetDlgItem(box, kColorText)),
              "Colour 239 of 256: red 238, green 238, blue 238 (#EEEEEE)");
    Press(box, IDOK);
    EXPECT_TRUE(answer.get());
    EXPECT_EQ(color, RGB(238, 238, 238));
}

TEST_F(ChoosingColor, The_longest_text_has_room) {
    ASSERT_NO_FATAL_FAILURE(Open());
    uint8_t white[3 * kOfferedColors];
    std::memset(white, 255, sizeof white);
    const std::string longest = ColorText(white, kOfferedColors - 1);
    const HWND text = GetDlgItem(box, kColorText);
    const HDC screen = GetDC(text);
    const HGDIOBJ before =
        SelectObject(screen, reinterpret_cast<HFONT>(SendMessageA(text, WM_GETFONT, 0, 0)));
    SIZE size = {};
    GetTextExtentPoint32A(screen, longest.c_str(), static_cast<int>(longest.size()), &size);
    SelectObject(screen, before);
    ReleaseDC(text, screen);
    RECT area;
    GetClientRect(text, &area);
    EXPECT_LE(size.cx, area.right);
    EXPECT_LE(size.cy, area.bottom);
    Press(box, IDCANCEL);
    EXPECT_FALSE(answer.get());
}

TEST_F(ChoosingColor, The_mouse_chooses_and_a_cancelled_box_changes_nothing) {
    ASSERT_NO_FATAL_FAILURE(Open());
    RECT area;
    const HWND swatches = GetDlgItem(box, kSwatches);
    GetClientRect(swatches, &area);
    PostMessageA(swatches, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(area.right / 16 * 3 + 4, 4));
    EXPECT_TRUE(WaitFor([this] { return IsAt(4); }));
    Press(box, IDCANCEL);
    EXPECT_FALSE(answer.get());
    EXPECT_EQ(color, RGB(40, 40, 40));
}

}  // namespace
}  // namespace kfx::test
