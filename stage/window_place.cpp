// SPDX-License-Identifier: MIT
#include "stage/window_place.h"

#include <algorithm>

#include "stage/stage.h"

namespace kfx::stage {
namespace {

constexpr int kStartWidth = 1000, kStartHeight = 680;  // device-independent pixels

// Shown minimized, it would come back as a button only.
UINT ShowCommand(const Stage& stage) { return stage.remembered.maximized ? SW_SHOWMAXIMIZED : SW_SHOWNORMAL; }

}  // namespace

// Windows before 10 have one resolution for all screens.
int DpiOf(HWND window) {
    using GetDpi = UINT(WINAPI*)(HWND);
    const auto address =
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"user32.dll"), "GetDpiForWindow"));
    if (address) return static_cast<int>(reinterpret_cast<GetDpi>(address)(window));
    const HDC screen = GetDC(nullptr);
    const int dpi = GetDeviceCaps(screen, LOGPIXELSY);
    ReleaseDC(nullptr, screen);
    return dpi;
}

void PlaceWindow(Stage* stage) {
    const RECT place = stage->remembered.window;
    WINDOWPLACEMENT placement = {};
    placement.length = sizeof placement;
    GetWindowPlacement(stage->window, &placement);
    placement.showCmd = SW_HIDE;
    if (place.right > place.left && MonitorFromRect(&place, MONITOR_DEFAULTTONULL)) {
        placement.rcNormalPosition = place;
        // First to the screen: where its scale is another one, the system proposes another size on the way.
        SetWindowPlacement(stage->window, &placement);
        const int dpi = std::max<int>(stage->remembered.dpi, 1);
        placement.rcNormalPosition.right = place.left + MulDiv(place.right - place.left, stage->dpi, dpi);
        placement.rcNormalPosition.bottom = place.top + MulDiv(place.bottom - place.top, stage->dpi, dpi);
    } else {
        RECT& normal = placement.rcNormalPosition;
        normal.right = normal.left + Scaled(*stage, kStartWidth);
        normal.bottom = normal.top + Scaled(*stage, kStartHeight);
    }
    placement.showCmd = ShowCommand(*stage);
    SetWindowPlacement(stage->window, &placement);
    SetForegroundWindow(stage->window);
}

void FollowDpi(Stage* stage, const RECT& proposed) {
    SetWindowPos(stage->window, nullptr, proposed.left, proposed.top, proposed.right - proposed.left,
                 proposed.bottom - proposed.top, SWP_NOZORDER | SWP_NOACTIVATE);
}

void RememberWindow(Stage* stage) {
    Remembered& remembered = stage->remembered;
    WINDOWPLACEMENT placement = {};
    placement.length = sizeof placement;
    if (GetWindowPlacement(stage->window, &placement)) {
        remembered.window = placement.rcNormalPosition;
        remembered.maximized =
            placement.showCmd == SW_SHOWMAXIMIZED || (placement.flags & WPF_RESTORETOMAXIMIZED) != 0;
        remembered.dpi = stage->dpi;
    }
    remembered.arrangement = static_cast<LONG>(stage->view.arrangement);
    remembered.ground = static_cast<LONG>(stage->view.ground);
    remembered.groundColor = static_cast<LONG>(stage->view.groundColor);
    remembered.forever = stage->playback.forever ? 1 : 0;
}

void TakeRememberedView(Stage* stage) {
    const Remembered& remembered = stage->remembered;
    if (remembered.arrangement == static_cast<LONG>(Arrangement::SideBySide))
        stage->view.arrangement = Arrangement::SideBySide;
    if (remembered.ground >= 0 && remembered.ground <= static_cast<LONG>(Ground::Colored))
        stage->view.ground = static_cast<Ground>(remembered.ground);
    stage->view.groundColor = static_cast<COLORREF>(remembered.groundColor) & 0xFFFFFF;
    stage->playback.forever = remembered.forever != 0;
}

}  // namespace kfx::stage
