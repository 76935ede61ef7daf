// SPDX-License-Identifier: MIT
// The effects' controls in the plug-in window: the seam of framework/panel.h.
#include "framework/panel.h"

#include <windows.h>

#include "documents/control_kinds.h"
#include "framework/number_text.h"
#include "resources/resource_ids.h"
#include "window/dialog_services.h"
#include "window/plugin_state.h"

namespace kfx {
namespace {

constexpr int kDropDownRoom = 200;  // pixels added to a drop-down list for its open part

// A panel whose controls are being copied into the plug-in window.
struct PanelCloning {
    HWND window;
    bool complete;  // until a control cannot be made
};

// Makes a hidden control like `original` at the same place in the plug-in window, in that window's font.
BOOL CALLBACK CloneControl(HWND original, LPARAM data) {
    auto* cloning = reinterpret_cast<PanelCloning*>(data);
    const HWND window = cloning->window;
    char className[64] = "", text[kTextBytes] = "";
    GetClassNameA(original, className, sizeof className);
    GetWindowTextA(original, text, sizeof text);
    RECT place = {};
    GetWindowRect(original, &place);
    MapWindowPoints(nullptr, GetParent(original), reinterpret_cast<POINT*>(&place), 2);
    if (lstrcmpiA(className, "combobox") == 0) place.bottom += kDropDownRoom;
    const auto style = static_cast<DWORD>(GetWindowLongPtrA(original, GWL_STYLE)) & ~DWORD{WS_VISIBLE};
    const auto moreStyle = static_cast<DWORD>(GetWindowLongPtrA(original, GWL_EXSTYLE));
    const HWND clone = CreateWindowExA(moreStyle, className, text, style, place.left, place.top,
                                       place.right - place.left, place.bottom - place.top, window,
                                       reinterpret_cast<HMENU>(GetWindowLongPtrA(original, GWLP_ID)),
                                       plugin.module, nullptr);
    cloning->complete = clone != nullptr;
    SendMessageA(clone, WM_SETFONT, static_cast<WPARAM>(SendMessageA(window, WM_GETFONT, 0, 0)), FALSE);
    return cloning->complete;
}

INT_PTR CALLBACK PanelProcedure(HWND panel, UINT message, WPARAM, LPARAM cloning) {
    if (message == WM_INITDIALOG) EnumChildWindows(panel, CloneControl, cloning);
    return FALSE;
}

void BindSlider(HWND slider, int32_t* variable) {
    char text[kTextBytes] = "";
    GetWindowTextA(slider, text, sizeof text);
    ControlRange range;
    ParseControlRange(text, &range);  // the text's default is not used: the variable has the value
    SCROLLINFO info = {};
    info.cbSize = sizeof info;
    info.fMask = SIF_RANGE | SIF_PAGE | SIF_POS | SIF_DISABLENOSCROLL;
    info.nMin = range.least;
    info.nMax = range.most;
    info.nPos = *variable;
    SetScrollInfo(slider, SB_CTL, &info, TRUE);
    BindControl(slider, BoundKind::Slider, variable);
    ShowSliderPosition(slider, *variable);
}

void BindEffectControl(HWND control, const EffectControl& row) {
    switch (row.kind) {
        case ControlKind::Slider:
        case ControlKind::SliderBox:
            BindSlider(control, row.variable);
            break;
        case ControlKind::CheckBox:
            BindControl(control, BoundKind::CheckBox, row.variable);
            SendMessageA(control, BM_SETCHECK, *row.variable ? BST_CHECKED : BST_UNCHECKED, 0);
            break;
        case ControlKind::List:
            FillList(control, row.text);
            BindControl(control, BoundKind::List, row.variable);
            SendMessageA(control, CB_SETCURSEL, static_cast<WPARAM>(*row.variable), 0);
            break;
    }
}

int32_t ReadSlider(HWND slider) {
    ControlRange range = {};
    if (!GetScrollRange(slider, SB_CTL, &range.least, &range.most))
        range = {.least = 0, .most = 100, .standard = 0};
    return ClampToRange(range, GetScrollPos(slider, SB_CTL));
}

}  // namespace

bool InitializePanel(const Effect& effect, void* window) {
    const auto target = static_cast<HWND>(window);
    PanelCloning cloning = {.window = target, .complete = true};
    const HWND panel = CreateDialogParamA(plugin.module, MAKEINTRESOURCEA(effect.panel), target,
                                          PanelProcedure, reinterpret_cast<LPARAM>(&cloning));
    if (!panel) return false;
    DestroyWindow(panel);
    if (!cloning.complete) return false;
    for (size_t i = 0; i < effect.controls.count; ++i) {
        const HWND control = GetDlgItem(target, effect.controls.rows[i].id);
        if (!control) return false;
        BindEffectControl(control, effect.controls.rows[i]);
    }
    return true;
}

int32_t ReadControl(const EffectControl& row, void* window) {
    const HWND control = GetDlgItem(static_cast<HWND>(window), row.id);
    switch (row.kind) {
        case ControlKind::Slider:
            return ReadSlider(control);
        case ControlKind::List:
            return static_cast<int32_t>(SendMessageA(control, CB_GETCURSEL, 0, 0));
        case ControlKind::CheckBox:
        case ControlKind::SliderBox:
            return SendMessageA(control, BM_GETCHECK, 0, 0) == BST_CHECKED;
    }
    return 0;
}

bool IsPanelOpen(const void* window) { return IsOpen(static_cast<HWND>(const_cast<void*>(window))); }

bool LocalBackgroundChosen(uint32_t* color) {
    if (!plugin.window || IsDlgButtonChecked(plugin.window, IDC_LOCAL_BACKGROUND) != BST_CHECKED)
        return false;
    *color = settings.localBackgroundColor;
    return true;
}

}  // namespace kfx
