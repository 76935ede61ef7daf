// SPDX-License-Identifier: MIT
// The controls of Stage's window at its least size, and their names for screen readers.
#include <algorithm>
#include <string>
#include <vector>

#include "stage/child_windows.h"
#include "stage/control_names.h"
#include "stage/playback.h"
#include "tests/stage/own_stage.h"
#include "tests/stage/small_films.h"

namespace kfx::test {
namespace {

using namespace stage;

std::vector<HWND> ChildrenOf(HWND window) {
    std::vector<HWND> children;
    for (HWND child = GetWindow(window, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT))
        children.push_back(child);
    return children;
}

std::string ClassOf(HWND window) {
    char name[100] = "";
    GetClassNameA(window, name, sizeof name);
    return name;
}

RECT AreaIn(HWND parent, HWND child) {
    RECT area;
    GetWindowRect(child, &area);
    MapWindowPoints(nullptr, parent, reinterpret_cast<POINT*>(&area), 2);
    return area;
}

SIZE SizeOfText(HWND control, const std::string& text) {
    const auto font = reinterpret_cast<HFONT>(SendMessageA(control, WM_GETFONT, 0, 0));
    const HDC screen = GetDC(control);
    const HGDIOBJ before = SelectObject(screen, font);
    SIZE size = {};
    GetTextExtentPoint32A(screen, text.c_str(), static_cast<int>(text.size()), &size);
    SelectObject(screen, before);
    ReleaseDC(control, screen);
    return size;
}

// What the frame text shows of a long animation.
std::string LongestPosition() {
    FramePool pool;
    const auto film = SmallFilm(std::vector<int>(1000, 999), std::vector<uint8_t>(1000, 1), &pool);
    Playback playback;
    ShowFrame(&playback, *film, 999);
    return PositionText(playback, *film);
}

struct Layout : OwnStage {
    void OpenAndBuild() {
        ASSERT_NO_FATAL_FAILURE(OpenHere({input}));
        ASSERT_TRUE(WaitForTitle("in.gif - Kestrel Stage"));
        ASSERT_NO_FATAL_FAILURE(Build("Solarize"));
    }

    // The window at its least size on a screen of this resolution. It takes the size in two steps, as from a
    // user's hand: the first one is proposed with the resolution.
    void MakeLeast(int dpi) const {
        RECT place;
        GetWindowRect(window, &place);
        place.right = place.left + MulDiv(place.right - place.left, dpi, 96);
        SendMessageA(window, WM_DPICHANGED, MAKEWPARAM(dpi, dpi), reinterpret_cast<LPARAM>(&place));
        SetWindowPos(window, nullptr, 0, 0, 1, 1, SWP_NOZORDER | SWP_NOACTIVATE);
        // What is only shown now and then was shown without the window's knowledge.
        SendMessageA(window, WM_SIZE, SIZE_RESTORED, 0);
    }

    std::vector<HWND> Shown() const {
        std::vector<HWND> shown = ChildrenOf(window);
        std::erase_if(shown, [](HWND child) { return !IsChildShown(child); });
        return shown;
    }

    void ExpectApart() const {
        RECT client;
        GetClientRect(window, &client);
        const std::vector<HWND> shown = Shown();
        for (size_t i = 0; i < shown.size(); ++i) {
            const RECT area = AreaIn(window, shown[i]);
            EXPECT_TRUE(area.left < area.right && area.top < area.bottom) << NameOf(shown[i]);
            EXPECT_TRUE(area.left >= 0 && area.top >= 0 && area.right <= client.right &&
                        area.bottom <= client.bottom)
                << NameOf(shown[i]) << " is cut by the window";
            for (size_t k = i + 1; k < shown.size(); ++k) {
                const RECT other = AreaIn(window, shown[k]);
                RECT both;
                EXPECT_FALSE(IntersectRect(&both, &area, &other))
                    << NameOf(shown[i]) << " and " << NameOf(shown[k]);
            }
        }
    }

    static std::string NameOf(HWND child) {
        return ClassOf(child) + " " + std::to_string(GetDlgCtrlID(child)) + " \"" + TextOf(child) + "\"";
    }

    void ExpectRoomFor(int control, const std::string& text) const {
        const RECT area = AreaIn(window, Control(control));
        const SIZE size = SizeOfText(Control(control), text);
        EXPECT_LE(size.cx, area.right - area.left) << text;
        EXPECT_LE(size.cy, area.bottom - area.top) << text;
    }

    void ExpectEverythingFits() const {
        for (const int control : {kKeepTest, kDropTest, kStatusProgress, kStopWork})
            ShowWindow(Control(control), SW_SHOWNA);
        SendMessageA(window, WM_SIZE, SIZE_RESTORED, 0);
        ExpectApart();
        ExpectRoomFor(kFrameText, LongestPosition());
        ExpectRoomFor(kStopWork, "Stop");
        ExpectRoomFor(kStatusText, "Building  1000 of 1000, about 59 min left");
        for (const int control : {kStatusProgress, kStopWork}) ShowWindow(Control(control), SW_HIDE);
        ShowWindow(Control(kGiveUpPlugin), SW_SHOWNA);
        SendMessageA(window, WM_SIZE, SIZE_RESTORED, 0);
        ExpectApart();
        ExpectRoomFor(kGiveUpPlugin, "Give up...");
        ExpectRoomFor(kStatusText, "The plug-in does not answer.");
        ShowWindow(Control(kGiveUpPlugin), SW_HIDE);
    }
};

TEST_F(Layout, Nothing_overlaps_or_is_cut_at_the_least_size) {
    ASSERT_NO_FATAL_FAILURE(OpenAndBuild());
    for (const int dpi : {96, 144, 192}) {
        SCOPED_TRACE(dpi);
        MakeLeast(dpi);
        ExpectEverythingFits();
    }
}

TEST_F(Layout, Every_control_has_a_name_for_screen_readers) {
    ASSERT_NO_FATAL_FAILURE(OpenAndBuild());
    std::vector<HWND> controls = ChildrenOf(window);
    for (const HWND tile : ChildrenOf(Control(kWall))) controls.push_back(tile);
    size_t named = 0;
    for (const HWND control : controls) {
        const std::string kind = ClassOf(control);
        if (kind == "Static") continue;  // its text is what it says
        const wchar_t* const name = NameOfControl(GetDlgCtrlID(control));
        named += name != nullptr;
        // Buttons are read with their text.
        EXPECT_TRUE(name || kind == "Button") << NameOf(control);
        EXPECT_NE(TextOf(control), "") << NameOf(control);
    }
    EXPECT_EQ(named, std::size(kControlNames)) << "each name has its control";
}

}  // namespace
}  // namespace kfx::test
