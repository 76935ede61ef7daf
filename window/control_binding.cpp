// SPDX-License-Identifier: MIT
#include "window/control_binding.h"

#include <algorithm>

#include "builder/fixed_palettes.h"
#include "documents/control_kinds.h"
#include "framework/working_image.h"
#include "host/host_requests.h"
#include "resources/resource_ids.h"
#include "window/effect_list.h"
#include "window/plugin_state.h"
#include "window/preview.h"
#include "window/screen_readers.h"

namespace kfx {
namespace {

bool ChooseColor(uint32_t* color) {
    uint8_t palette[kPaletteBytes];
    BuildFixedPalette(palette, kOrthogonal256, nullptr);
    const HWND window = plugin.window;
    return RequestChooseColor(plugin.host, window, palette, color) && IsOpen(window);
}

void RestartUpdateTimer(HWND window) {
    KillTimer(window, kUpdateTimer);
    SetTimer(window, kUpdateTimer, settings.updateDelay, nullptr);
}

// The visible slider under a point of the screen, or null. Group boxes lie over the sliders.
HWND SliderAt(HWND window, POINT place) {
    for (HWND child = GetWindow(window, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
        RECT area;
        if (KindOf(child) != BoundKind::Slider || !IsWindowVisible(child) || !GetWindowRect(child, &area))
            continue;
        if (PtInRect(&area, place)) return child;
    }
    return nullptr;
}

}  // namespace

void OnControlChange(HWND window, HWND control, int id, int notification) {
    if (!control || !IsWindowVisible(window)) return;
    const Follow follow = OnControlNotification(control, notification, ChooseColor);
    if (!IsOpen(window)) return;
    if (follow != Follow::None) TellNewValue(control);
    if (id < FIRST_PREVIEWED_CONTROL) return;
    if (follow == Follow::AfterPause)
        RestartUpdateTimer(window);
    else if (follow == Follow::AtOnce)
        RepaintPreview(window);
}

void OnScroll(HWND window, HWND slider, int code, int trackedPosition) {
    int least = 0, most = 0;
    GetScrollRange(slider, SB_CTL, &least, &most);
    const int position = GetScrollPos(slider, SB_CTL);
    const int page = most / 8;  // of the maximum, not of the range
    int moved = position;
    switch (code) {
        case SB_LINELEFT:
            moved = position - 1;
            break;
        case SB_LINERIGHT:
            moved = position + 1;
            break;
        case SB_PAGELEFT:
            moved = position - page;
            break;
        case SB_PAGERIGHT:
            moved = position + page;
            break;
        case SB_THUMBPOSITION:
            moved = trackedPosition;
            break;
        case SB_THUMBTRACK:
            ShowSliderPosition(slider, trackedPosition);
            return;
    }
    // Limited to 0, not to the range's minimum: the scroll bar limits its position itself.
    moved = std::max(0, std::min(moved, most));
    if (moved == position) return;
    SetScrollPos(slider, SB_CTL, moved, TRUE);
    PostMessageA(window, WM_COMMAND, static_cast<WPARAM>(GetDlgCtrlID(slider)),
                 reinterpret_cast<LPARAM>(slider));
}

bool OnWheel(HWND window, int delta, POINT place) {
    static int rest = 0;  // fine wheels send parts of a notch
    HWND slider = SliderAt(window, place);
    if (!slider) slider = GetFocus();
    if (KindOf(slider) != BoundKind::Slider || GetParent(slider) != window || !IsWindowVisible(slider))
        return false;
    if ((rest < 0) != (delta < 0)) rest = 0;
    rest += delta;
    // All notches at once, so that the preview is rendered once.
    const int notches = rest / WHEEL_DELTA;
    rest %= WHEEL_DELTA;
    if (notches != 0) OnScroll(window, slider, SB_THUMBPOSITION, GetScrollPos(slider, SB_CTL) + notches);
    return true;
}

void OnUpdateTimer(HWND window) {
    KillTimer(window, kUpdateTimer);
    RepaintPreview(window);
    NotifyCurrentEffect(window, EffectEvent::Changed);
}

}  // namespace kfx
