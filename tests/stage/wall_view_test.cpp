// SPDX-License-Identifier: MIT
// The wall's window in a window of the test, used by its keys and buttons.
#include "stage/wall_view.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <utility>
#include <vector>

#include "stage/variation.h"
#include "tests/stage/wall_test_source.h"
#include "tests/support/wait_for.h"

namespace kfx::stage {
namespace {

using test::WallTestSource;

constexpr int kWallId = 77;
constexpr LRESULT kTiles = 20;
constexpr size_t kEmboss = 1, kBump = 0, kSwirl = 17;

// What the wall has told its parent.
std::vector<EffectSettings> opened;
std::string told;

LRESULT CALLBACK ParentProcedure(HWND window, UINT message, WPARAM word, LPARAM pointer) {
    if (message == kWallOpens) opened.push_back(*reinterpret_cast<const EffectSettings*>(pointer));
    if (message == kWallTells) told = *reinterpret_cast<const std::string*>(pointer);
    return DefWindowProcA(window, message, word, pointer);
}

WPARAM Turned(int wheel) { return static_cast<WPARAM>(static_cast<WORD>(wheel)) << 16; }

struct WallViewTest : ::testing::Test {
    HWND parent = nullptr;
    HWND wall = nullptr;

    void SetUp() override {
        opened.clear();
        told.clear();
        WNDCLASSA parentClass = {};
        parentClass.lpfnWndProc = ParentProcedure;
        parentClass.hInstance = GetModuleHandleA(nullptr);
        parentClass.lpszClassName = "WallParent";
        RegisterClassA(&parentClass);
        parent = CreateWindowA("WallParent", "Wall", WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN | WS_VISIBLE, 0, 0,
                               800, 500, nullptr, nullptr, parentClass.hInstance, nullptr);
        ASSERT_TRUE(parent);
        wall = CreateWall(parent, kWallId, 96);
        ASSERT_TRUE(wall);
        SendMessageA(wall, WM_SETFONT, reinterpret_cast<WPARAM>(GetStockObject(DEFAULT_GUI_FONT)), FALSE);
        RECT client;
        GetClientRect(parent, &client);
        MoveWindow(wall, 0, 0, client.right, client.bottom, TRUE);
        ShowWindow(wall, SW_SHOW);
        SetFocus(wall);
    }
    void TearDown() override { DestroyWindow(parent); }

    // Runs the thread's messages as Stage does until the condition holds.
    template <typename Condition>
    bool PumpUntil(const Condition& condition) const {
        const auto end = std::chrono::steady_clock::now() + test::kLongestWait;
        while (!condition()) {
            if (std::chrono::steady_clock::now() > end) return false;
            MsgWaitForMultipleObjects(0, nullptr, FALSE, 50, QS_ALLINPUT);
            for (MSG message; PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE);) {
                if (TakeWallKey(wall, message)) continue;
                TranslateMessage(&message);
                DispatchMessageA(&message);
            }
        }
        return true;
    }

    bool PumpUntilReady() const {
        return PumpUntil([this] { return SendMessageA(wall, kWallCountReady, 0, 0) == kTiles; });
    }

    void Show(int frames, int width, int height) const {
        ShowOnWall(wall, WallSourceOf(WallTestSource(frames, width, height)));
        ASSERT_TRUE(PumpUntilReady());
    }

    HWND Tile(size_t number) const { return GetDlgItem(wall, kFirstWallTile + static_cast<int>(number)); }

    std::string TextOf(size_t tile) const {
        char text[300] = "";
        GetWindowTextA(Tile(tile), text, sizeof text);
        return text;
    }

    size_t FocusedTile() const {
        for (size_t i = 0; i < static_cast<size_t>(kTiles); ++i)
            if (GetFocus() == Tile(i)) return i;
        return SIZE_MAX;
    }

    // A key for the tile with the focus; it has been handled when the thread has no messages left.
    void Press(WPARAM key) const {
        PostMessageA(GetFocus(), WM_KEYDOWN, key, 0);
        bool done = false;
        PumpUntil([&done] { return std::exchange(done, true); });
    }

    EffectSettings Variation(size_t effect, uint64_t number) const {
        return VariationAt(WallEffects(wall), effect, 1, number);
    }

    std::string NameWith(size_t effect, const EffectSettings& settings, const std::string& note) const {
        return WallEffects(wall)[effect].name + ": " + SettingsText(WallEffects(wall)[effect], settings) +
               note;
    }
};

TEST_F(WallViewTest, All_tiles_get_their_pictures_and_have_names) {
    ASSERT_NO_FATAL_FAILURE(Show(3, 320, 240));
    EXPECT_EQ(TextOf(kBump), "Bump");
    EXPECT_EQ(TextOf(kEmboss), "Emboss: Radius 5, Depth 15");
    EXPECT_EQ(TextOf(kSwirl), "Swirl: Angle 45");
    ASSERT_NO_FATAL_FAILURE(Show(1, 20, 10));
    ShowOnWall(wall, nullptr);
    EXPECT_EQ(SendMessageA(wall, kWallCountReady, 0, 0), 0);
}

TEST_F(WallViewTest, A_click_and_the_Enter_key_open_what_the_tile_shows) {
    ASSERT_NO_FATAL_FAILURE(Show(2, 40, 30));
    SendMessageA(Tile(kSwirl), BM_CLICK, 0, 0);
    ASSERT_EQ(opened.size(), 1u);
    EXPECT_TRUE(opened[0] == Variation(kSwirl, 0));
    SetFocus(Tile(kEmboss));
    Press(VK_SPACE);
    Press(VK_RETURN);
    ASSERT_EQ(opened.size(), 2u);
    EXPECT_TRUE(opened[1] == Variation(kEmboss, 1));
}

TEST_F(WallViewTest, Without_an_animation_nothing_opens) {
    SendMessageA(Tile(kSwirl), BM_CLICK, 0, 0);
    EXPECT_TRUE(opened.empty());
}

TEST_F(WallViewTest, Space_shows_variations_Left_goes_back_and_then_moves_on) {
    ASSERT_NO_FATAL_FAILURE(Show(2, 40, 30));
    SetFocus(Tile(kSwirl));
    Press(VK_SPACE);
    Press(VK_SPACE);
    EXPECT_EQ(TextOf(kSwirl), NameWith(kSwirl, Variation(kSwirl, 2), " (variation 2)"));
    Press(VK_LEFT);
    EXPECT_EQ(TextOf(kSwirl), NameWith(kSwirl, Variation(kSwirl, 1), " (variation 1)"));
    Press(VK_BACK);
    EXPECT_EQ(TextOf(kSwirl), "Swirl: Angle 45");
    Press(VK_BACK);
    EXPECT_EQ(FocusedTile(), kSwirl);
    Press(VK_LEFT);
    EXPECT_EQ(FocusedTile(), kSwirl - 1);
    EXPECT_TRUE(PumpUntilReady());
}

TEST_F(WallViewTest, What_is_kept_stays_for_the_next_animation) {
    ASSERT_NO_FATAL_FAILURE(Show(2, 40, 30));
    SetFocus(Tile(kSwirl));
    Press(VK_SPACE);
    Press('S');
    const std::string kept = NameWith(kSwirl, Variation(kSwirl, 1), " (kept)");
    EXPECT_EQ(TextOf(kSwirl), kept);
    Press(VK_SPACE);
    EXPECT_EQ(TextOf(kSwirl), NameWith(kSwirl, Variation(kSwirl, 2), " (variation 2)"));
    Press(VK_ESCAPE);
    EXPECT_EQ(TextOf(kSwirl), kept);
    SetFocus(Tile(kEmboss));
    Press(VK_SPACE);
    ASSERT_NO_FATAL_FAILURE(Show(1, 30, 30));
    EXPECT_EQ(TextOf(kSwirl), kept);
    EXPECT_EQ(TextOf(kEmboss), "Emboss: Radius 5, Depth 15");
}

TEST_F(WallViewTest, An_effect_without_parameters_has_no_variation) {
    ASSERT_NO_FATAL_FAILURE(Show(1, 30, 30));
    SetFocus(Tile(kBump));
    Press(VK_SPACE);
    EXPECT_EQ(TextOf(kBump), "Bump");
    EXPECT_EQ(told, "");
    Press('S');
    EXPECT_EQ(told, "Bump.   Enter: open");
}

TEST_F(WallViewTest, Keys_move_the_focus_and_the_tile_with_it_is_seen) {
    ASSERT_NO_FATAL_FAILURE(Show(1, 30, 30));
    ASSERT_EQ(FocusedTile(), 0u);
    Press(VK_RIGHT);
    EXPECT_EQ(FocusedTile(), 1u);
    EXPECT_EQ(told.substr(0, 26), "Emboss: Radius 5, Depth 15");
    const auto isSeen = [this](size_t tile) {
        RECT place, client;
        GetWindowRect(Tile(tile), &place);
        MapWindowPoints(nullptr, wall, reinterpret_cast<POINT*>(&place), 2);
        GetClientRect(wall, &client);
        return place.top >= 0 && place.bottom <= client.bottom;
    };
    EXPECT_FALSE(isSeen(19));
    Press(VK_END);
    EXPECT_EQ(FocusedTile(), 19u);
    EXPECT_TRUE(isSeen(19));
    EXPECT_FALSE(isSeen(0));
    Press(VK_HOME);
    EXPECT_TRUE(isSeen(0));
    // Only the tile with the focus is a tab stop.
    for (size_t i = 0; i < static_cast<size_t>(kTiles); ++i)
        EXPECT_EQ((GetWindowLongA(Tile(i), GWL_STYLE) & WS_TABSTOP) != 0, i == 0) << i;
}

TEST_F(WallViewTest, The_wheel_and_the_scroll_bar_move_the_wall) {
    ASSERT_NO_FATAL_FAILURE(Show(1, 30, 30));
    const auto position = [this] { return GetScrollPos(wall, SB_VERT); };
    SendMessageA(wall, WM_MOUSEWHEEL, Turned(-WHEEL_DELTA), 0);
    EXPECT_EQ(position(), 96);
    // A fine wheel turns by parts of a notch.
    for (int i = 0; i < 4; ++i) SendMessageA(Tile(3), WM_MOUSEWHEEL, Turned(-WHEEL_DELTA / 4), 0);
    EXPECT_EQ(position(), 192);
    SendMessageA(wall, WM_VSCROLL, SB_BOTTOM, 0);
    EXPECT_GT(position(), 192);
    SendMessageA(wall, WM_VSCROLL, SB_TOP, 0);
    EXPECT_EQ(position(), 0);
}

TEST_F(WallViewTest, Every_moment_shows_its_frame) {
    ASSERT_NO_FATAL_FAILURE(Show(2, 40, 30));  // 100 and 200 ms
    const auto colorAt = [this](uint64_t moment) {
        constexpr size_t kUnchanged = 5;  // HSB and Channels, at its defaults
        ShowWallAt(wall, moment);
        UpdateWindow(Tile(kUnchanged));
        const HDC drawn = GetDC(Tile(kUnchanged));
        const COLORREF color = GetPixel(drawn, 80, 70);
        ReleaseDC(Tile(kUnchanged), drawn);
        return color;
    };
    const COLORREF first = colorAt(0), second = colorAt(100);
    EXPECT_NE(first, second);
    EXPECT_EQ(colorAt(99), first);
    EXPECT_EQ(colorAt(299), second);
    EXPECT_EQ(colorAt(300), second) << "the end";
    EXPECT_EQ(colorAt(50), first);
}

TEST_F(WallViewTest, Another_resolution_makes_other_pictures) {
    ASSERT_NO_FATAL_FAILURE(Show(2, 640, 480));
    RECT before, after;
    GetWindowRect(Tile(0), &before);
    SetWallDpi(wall, 192);
    ASSERT_TRUE(PumpUntilReady());
    GetWindowRect(Tile(0), &after);
    EXPECT_EQ(after.right - after.left, 2 * (before.right - before.left));
}

// The threads end with the window, whatever they are at.
TEST_F(WallViewTest, Closing_in_the_midst_of_the_work_ends_it) {
    ShowOnWall(wall, WallSourceOf(WallTestSource(30, 300, 200)));
    DestroyWindow(wall);
    EXPECT_FALSE(IsWindow(wall));
}

}  // namespace
}  // namespace kfx::stage
