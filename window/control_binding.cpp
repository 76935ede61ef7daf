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

namespace kfx {
namespace {

void ChooseColor(HWND control) {
    const auto* variable = static_cast<const uint32_t*>(VariableOf(control));
    if (!variable) return;
    uint8_t palette[kPaletteBytes];
    BuildFixedPalette(palette, kOrthogonal256, nullptr);
    uint32_t color = *variable;
    const HWND window = plugin.window;
    if (!RequestChooseColor(plugin.host, window, palette, &color) || !IsOpen(window)) return;
    SetColorButton(control, color);
}

void StoreSlider(HWND slider) {
    StoreControl(slider);
    ShowSliderPosition(slider, GetScrollPos(slider, SB_CTL));
}

void StoreTrackBar(HWND trackBar) {
    StoreControl(trackBar);
    SetDlgItemInt(GetParent(trackBar), GetDlgCtrlID(trackBar) + 1,
                  static_cast<UINT>(SendMessageA(trackBar, WM_USER, 0, 0)), FALSE);
}

enum class Follow {
    Timer,    // the preview waits until the user pauses
    Preview,  // the preview is repainted at once
};

constexpr int kAnyNotification = -1;
constexpr int kClosedUp = CBN_CLOSEUP;  // of lists; text fields are bound to the same number

struct BindingRow {
    BoundKind kind;
    int notification;
    void (*store)(HWND control);
    Follow follow;
};

void Store(HWND control) { StoreControl(control); }

constexpr BindingRow kBindings[] = {
    {BoundKind::Number, kAnyNotification, Store, Follow::Timer},
    {BoundKind::NumberText, kAnyNotification, Store, Follow::Timer},
    {BoundKind::CompanionNumber, kAnyNotification, Store, Follow::Timer},
    {BoundKind::CheckBox, kAnyNotification, Store, Follow::Timer},
    {BoundKind::List, kClosedUp, Store, Follow::Preview},
    {BoundKind::TextField, kClosedUp, Store, Follow::Preview},
    {BoundKind::ListBox, kAnyNotification, Store, Follow::Preview},
    {BoundKind::ColorButton, kAnyNotification, ChooseColor, Follow::Preview},
    {BoundKind::Slider, kAnyNotification, StoreSlider, Follow::Preview},
    {BoundKind::TrackBar, kAnyNotification, StoreTrackBar, Follow::Preview},
};

void RestartUpdateTimer(HWND window) {
    KillTimer(window, kUpdateTimer);
    SetTimer(window, kUpdateTimer, settings.updateDelay, nullptr);
}

}  // namespace

void TakeControlChange(HWND window, HWND control, int id, int notification) {
    if (!control || !IsWindowVisible(window)) return;
    const BoundKind kind = KindOf(control);
    for (const BindingRow& row : kBindings) {
        if (row.kind != kind) continue;
        if (row.notification != kAnyNotification && row.notification != notification) return;
        row.store(control);
        if (!IsOpen(window)) return;
        if (id < FIRST_PREVIEWED_CONTROL) return;
        if (row.follow == Follow::Timer)
            RestartUpdateTimer(window);
        else
            RepaintPreview(window);
        return;
    }
}

void TakeScroll(HWND window, HWND slider, int code, int trackedPosition) {
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
    // Down to 0 whatever the range's minimum; the scroll bar itself keeps to its range.
    moved = std::max(0, std::min(moved, most));
    if (moved == position) return;
    SetScrollPos(slider, SB_CTL, moved, TRUE);
    PostMessageA(window, WM_COMMAND, static_cast<WPARAM>(GetDlgCtrlID(slider)),
                 reinterpret_cast<LPARAM>(slider));
}

void TakeUpdateTimer(HWND window) {
    KillTimer(window, kUpdateTimer);
    RepaintPreview(window);
    NotifyCurrentEffect(window, EffectEvent::Changed);
}

}  // namespace kfx
