// SPDX-License-Identifier: MIT
#include "window/slider_menu.h"

#include <windowsx.h>

#include <cstdio>

#include "documents/control_kinds.h"
#include "framework/number_text.h"
#include "framework/settings.h"
#include "resources/resource_ids.h"
#include "window/control_binding.h"

namespace kfx {
namespace {

int menuSlider = 0;  // its identifier; 0: none

// False: no slider, or one without a range in its text.
bool ReadDefault(HWND slider, int32_t* position) {
    if (KindOf(slider) != BoundKind::Slider) return false;
    char text[kTextBytes] = "";
    GetWindowTextA(slider, text, sizeof text);
    ControlRange range;
    if (!ParseControlRange(text, &range)) return false;
    *position = range.standard;
    return true;
}

}  // namespace

bool OnContextMenu(HWND window, HWND control, LPARAM place) {
    int32_t position;
    if (!ReadDefault(control, &position)) return false;
    menuSlider = GetDlgCtrlID(control);
    char text[32];
    std::snprintf(text, sizeof text, "&Default: %d",
                  static_cast<int>(ShownPosition(menuSlider + 1, position)));
    POINT corner = {GET_X_LPARAM(place), GET_Y_LPARAM(place)};
    if (place == -1) {
        RECT area = {};
        GetWindowRect(control, &area);
        corner = {area.left, area.bottom};
    }
    const HMENU menu = CreatePopupMenu();
    AppendMenuA(menu, MF_STRING, IDM_SLIDER_DEFAULT, text);
    TrackPopupMenu(menu, TPM_LEFTALIGN | TPM_RIGHTBUTTON, corner.x, corner.y, 0, window, nullptr);
    DestroyMenu(menu);
    return true;
}

void OnSliderDefault(HWND window) {
    const HWND slider = menuSlider ? GetDlgItem(window, menuSlider) : nullptr;
    menuSlider = 0;
    int32_t position;
    if (slider && ReadDefault(slider, &position)) OnScroll(window, slider, SB_THUMBPOSITION, position);
}

}  // namespace kfx
