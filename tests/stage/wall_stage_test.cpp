// SPDX-License-Identifier: MIT
// The wall in Stage's window: files open on it, and its tiles open the plug-in.
#include "resources/panel_controls.h"
#include "stage/variation.h"
#include "stage/wall_view.h"
#include "tests/stage/stage_program.h"

namespace kfx::test {
namespace {

using namespace stage;

constexpr LRESULT kTiles = 20;
constexpr size_t kHsb = 5, kSwirl = 17;
constexpr UINT kAnswerMilliseconds = 10000;  // until it is asked once more

struct WallInStage : StageWindow {
    HWND wall = nullptr;

    void OpenWall() {
        ASSERT_NO_FATAL_FAILURE(Open({input}));
        ASSERT_TRUE(WaitForTitle("in.gif - Kestrel Stage"));
        wall = Control(stage::kWall);
        ASSERT_TRUE(WaitFor([this] { return Ask(wall, kWallCountReady, 0) == kTiles; }));
        ASSERT_TRUE(IsWindowVisible(wall));
    }

    static LRESULT Ask(HWND asked, UINT message, WPARAM word) {
        DWORD_PTR answer = 0;
        SendMessageTimeoutA(asked, message, word, 0, SMTO_NORMAL, kAnswerMilliseconds, &answer);
        return static_cast<LRESULT>(answer);
    }

    HWND Tile(size_t number) const { return GetDlgItem(wall, kFirstWallTile + static_cast<int>(number)); }

    bool WaitForTile(size_t number, const std::string& text) const {
        return WaitFor([&] { return TextOf(Tile(number)) == text; });
    }

    // The text of a tile at this variation.
    static std::string Varied(size_t effect, uint64_t variation) {
        static const std::vector<EffectDescription> effects = DescribeEffects();
        const EffectSettings settings = VariationAt(effects, effect, 1, variation);
        return effects[effect].name + ": " + SettingsText(effects[effect], settings) + " (variation " +
               std::to_string(variation) + ")";
    }

    void Key(WPARAM key) const { PostMessageA(Tile(0), WM_KEYDOWN, key, 0); }

    // Moves the focus from the first tile.
    void FocusTile(size_t number) const {
        Key(VK_HOME);
        for (size_t i = 0; i < number; ++i) Key(VK_RIGHT);
    }

    // Opens what a tile shows, and waits until the plug-in shows its effect.
    void OpenTile(size_t number, HWND* plugin) const {
        PostMessageA(Tile(number), BM_CLICK, 0, 0);
        ASSERT_NO_FATAL_FAILURE(WaitForDialog("Kestrel FX #1", plugin));
        ASSERT_TRUE(WaitFor([&] {
            return Ask(GetDlgItem(*plugin, kPluginEffect), CB_GETCURSEL, 0) == static_cast<LRESULT>(number);
        }));
    }

    bool WaitForPosition(HWND plugin, int slider, int position) const {
        return WaitFor([&] { return Ask(GetDlgItem(plugin, slider), SBM_GETPOS, 0) == position; });
    }
};

TEST_F(WallInStage, A_file_opens_under_every_effect_and_a_click_opens_that_effect) {
    ASSERT_NO_FATAL_FAILURE(OpenWall());
    EXPECT_FALSE(IsWindowVisible(Control(stage::kCanvas)));
    HWND plugin = nullptr;
    ASSERT_NO_FATAL_FAILURE(OpenTile(kSwirl, &plugin));
    EXPECT_TRUE(WaitForPosition(plugin, IDC_SWIRL_ANGLE, 1485));
    Press(plugin, kPluginBuild);
    ASSERT_TRUE(WaitForPossible(kSave));
    EXPECT_TRUE(WaitFor([this] { return IsWindowVisible(Control(stage::kCanvas)) != 0; }))
        << "what was made is seen";
    EXPECT_FALSE(IsWindowVisible(wall));
    ASSERT_NO_FATAL_FAILURE(Close(true));
}

TEST_F(WallInStage, Variations_go_forth_and_back_and_are_kept) {
    ASSERT_NO_FATAL_FAILURE(OpenWall());
    FocusTile(kSwirl);
    Key(VK_SPACE);
    Key(VK_SPACE);
    ASSERT_TRUE(WaitForTile(kSwirl, Varied(kSwirl, 2)));
    Key(VK_LEFT);
    ASSERT_TRUE(WaitForTile(kSwirl, Varied(kSwirl, 1)));
    Key('S');
    std::string kept = Varied(kSwirl, 1);
    kept.replace(kept.find("variation 1"), 11, "kept");
    ASSERT_TRUE(WaitForTile(kSwirl, kept));
    EXPECT_TRUE(WaitFor([this] { return Ask(wall, kWallCountReady, 0) == kTiles; }));
    HWND plugin = nullptr;
    ASSERT_NO_FATAL_FAILURE(OpenTile(kSwirl, &plugin));
    const std::vector<EffectDescription> effects = DescribeEffects();
    EXPECT_TRUE(
        WaitForPosition(plugin, IDC_SWIRL_ANGLE, VariationAt(effects, kSwirl, 1, 1).values[0] + 1440));
    Press(plugin, kPluginBuild);
    ASSERT_TRUE(WaitForPossible(kSave));
    ASSERT_NO_FATAL_FAILURE(Close(true));
}

// The plug-in's own documents do not hold this box.
TEST_F(WallInStage, Every_kind_of_control_gets_its_value) {
    ASSERT_NO_FATAL_FAILURE(OpenWall());
    FocusTile(kHsb);
    for (int i = 0; i < 4; ++i) Key(VK_SPACE);
    ASSERT_TRUE(WaitForTile(kHsb, Varied(kHsb, 4)));
    HWND plugin = nullptr;
    ASSERT_NO_FATAL_FAILURE(OpenTile(kHsb, &plugin));
    const auto isChecked = [plugin](int box) {
        return Ask(GetDlgItem(plugin, box), BM_GETCHECK, 0) == BST_CHECKED;
    };
    EXPECT_TRUE(WaitFor([&] { return isChecked(IDC_HSB_INVERT); }));
    EXPECT_TRUE(isChecked(IDC_HSB_ENABLE));
    EXPECT_FALSE(isChecked(IDC_HSB_CHANNELS_ENABLE));
    ASSERT_NO_FATAL_FAILURE(Close(false));
}

TEST_F(WallInStage, The_view_changes_between_wall_and_picture) {
    ASSERT_NO_FATAL_FAILURE(OpenWall());
    Run(kSideBySideView);
    EXPECT_TRUE(
        WaitFor([this] { return !IsWindowVisible(wall) && IsWindowVisible(Control(stage::kCanvas)); }));
    Run(kWallView);
    EXPECT_TRUE(
        WaitFor([this] { return IsWindowVisible(wall) && !IsWindowVisible(Control(stage::kCanvas)); }));
    ASSERT_NO_FATAL_FAILURE(Close(false));
}

}  // namespace
}  // namespace kfx::test
