// SPDX-License-Identifier: MIT
#include "stage/child_windows.h"

#include <gtest/gtest.h>

namespace kfx::test {
namespace {

using namespace stage;

int changes = 0;  // messages by which the child has been told of a change

LRESULT CALLBACK CountChanges(HWND window, UINT message, WPARAM word, LPARAM pointer) {
    changes += message == WM_WINDOWPOSCHANGING || message == WM_ENABLE || message == WM_SHOWWINDOW ||
               message == WM_SETTEXT;
    return DefWindowProcW(window, message, word, pointer);
}

struct ChildWindow : ::testing::Test {
    HWND parent = nullptr;
    HWND child = nullptr;

    void SetUp() override {
        WNDCLASSW counting = {};
        counting.lpfnWndProc = CountChanges;
        counting.hInstance = GetModuleHandleW(nullptr);
        counting.lpszClassName = L"KestrelCountedChild";
        RegisterClassW(&counting);
        parent = CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 50, 60, 300, 200, nullptr, nullptr,
                                 counting.hInstance, nullptr);
        child = CreateWindowExW(0, L"KestrelCountedChild", L"before", WS_CHILD | WS_VISIBLE, 1, 2, 30, 40,
                                parent, nullptr, counting.hInstance, nullptr);
        ASSERT_NE(child, nullptr);
        changes = 0;
    }
    void TearDown() override { DestroyWindow(parent); }

    RECT Place() const {
        RECT place;
        GetWindowRect(child, &place);
        MapWindowPoints(nullptr, parent, reinterpret_cast<POINT*>(&place), 2);
        return place;
    }
};

TEST_F(ChildWindow, What_is_as_it_should_be_is_not_touched) {
    PlaceChild(child, {1, 2, 31, 42});
    EnableChild(child, true);
    EXPECT_FALSE(ShowChild(child, true));
    SetChildText(child, L"before");
    EXPECT_EQ(changes, 0);
}

TEST_F(ChildWindow, Changes_reach_the_child) {
    const RECT place = {5, 2, 31, 42};
    PlaceChild(child, place);
    const RECT now = Place();
    EXPECT_TRUE(EqualRect(&now, &place));
    EnableChild(child, false);
    EXPECT_FALSE(IsWindowEnabled(child));
    EXPECT_TRUE(ShowChild(child, false));
    EXPECT_FALSE(IsChildShown(child));
    for (const wchar_t* text : {L"before and more", L"before", L""}) {
        SetChildText(child, text);
        wchar_t shown[40] = L"";
        GetWindowTextW(child, shown, 40);
        EXPECT_STREQ(shown, text);
    }
}

}  // namespace
}  // namespace kfx::test
