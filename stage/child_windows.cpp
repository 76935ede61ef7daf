// SPDX-License-Identifier: MIT
#include "stage/child_windows.h"

namespace kfx::stage {

void PlaceChild(HWND child, const RECT& area, UINT flags) {
    RECT now;
    if (GetWindowRect(child, &now)) {
        MapWindowPoints(nullptr, GetParent(child), reinterpret_cast<POINT*>(&now), 2);
        if (EqualRect(&now, &area)) return;
    }
    SetWindowPos(child, nullptr, area.left, area.top, area.right - area.left, area.bottom - area.top,
                 flags | SWP_NOZORDER | SWP_NOACTIVATE);
}

void EnableChild(HWND child, bool enabled) {
    if ((IsWindowEnabled(child) != 0) != enabled) EnableWindow(child, enabled);
}

bool ShowChild(HWND child, bool shown) {
    if (IsChildShown(child) == shown) return false;
    ShowWindow(child, shown ? SW_SHOWNA : SW_HIDE);
    return true;
}

bool IsChildShown(HWND child) { return (GetWindowLongPtrW(child, GWL_STYLE) & WS_VISIBLE) != 0; }

void SetChildText(HWND child, const std::wstring& text) {
    std::wstring now(text.size() + 2, L'\0');
    now.resize(static_cast<size_t>(GetWindowTextW(child, now.data(), static_cast<int>(now.size()))));
    if (text != now) SetWindowTextW(child, text.c_str());
}

}  // namespace kfx::stage
