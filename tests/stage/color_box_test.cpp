// SPDX-License-Identifier: MIT
// The box for colours, used by keys.
#include "stage/color_box.h"

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
