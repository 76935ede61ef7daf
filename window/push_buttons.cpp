// SPDX-License-Identifier: MIT
#include "window/push_buttons.h"

#include "window/button_looks.h"
#include "window/guards.h"
#include "window/plugin_state.h"

namespace kfx {
namespace {

constexpr char kProcedureProperty[] = "KestrelButtonProcedure";  // the procedure before ours

// The user-data word of a converted button: whether Enter presses it now.
bool IsDefault(HWND button) { return GetWindowLongPtrA(button, GWLP_USERDATA) != 0; }
void SetDefault(HWND button, bool isDefault) { SetWindowLongPtrA(button, GWLP_USERDATA, isDefault); }

HWND hotButton = nullptr;  // the converted button under the pointer

void SetHot(HWND button, bool hot) {
    if ((hotButton == button) == hot) return;
    // The pointer may reach this button before it is told to have left the other.
    if (hotButton && hotButton != button) InvalidateRect(hotButton, nullptr, FALSE);
    hotButton = hot ? button : nullptr;
    InvalidateRect(button, nullptr, FALSE);
    TRACKMOUSEEVENT leaving = {
        .cbSize = sizeof leaving, .dwFlags = TME_LEAVE, .hwndTrack = button, .dwHoverTime = 0};
    if (hot) TrackMouseEvent(&leaving);
}

// An owner-drawn button tells the dialog manager nothing about being the default and takes the second click
// of a quick pair for a double click; this restores both.
LRESULT CALLBACK ButtonProcedure(HWND button, UINT message, WPARAM word, LPARAM data) {
    const HANDLE known = GetPropA(button, kProcedureProperty);
    const WNDPROC previous = known ? reinterpret_cast<WNDPROC>(known) : DefWindowProcA;
    switch (message) {
        case WM_GETDLGCODE:
            return DLGC_BUTTON | (IsDefault(button) ? DLGC_DEFPUSHBUTTON : DLGC_UNDEFPUSHBUTTON);
        case BM_SETSTYLE:
            SetDefault(button, (word & BS_TYPEMASK) == BS_DEFPUSHBUTTON);
            InvalidateRect(button, nullptr, FALSE);
            return 0;
        case WM_LBUTTONDBLCLK:
            message = WM_LBUTTONDOWN;
            break;
        case WM_MOUSEMOVE:
            SetHot(button, true);
            break;
        case WM_MOUSELEAVE:
            SetHot(button, false);
            break;
        case WM_ERASEBKGND:
            return TRUE;  // every pixel is drawn
        case WM_NCDESTROY:
            if (hotButton == button) hotButton = nullptr;
            RemovePropA(button, kProcedureProperty);
            break;
    }
    return CallWindowProcA(previous, button, message, word, data);
}

void DrawLabel(const DRAWITEMSTRUCT& item, const ButtonFace& face) {
    char text[kTextBytes] = "";
    GetWindowTextA(item.hwndItem, text, sizeof text);
    RECT place = face.area;
    InflateRect(&place, -3, -1);
    const ButtonLabel label = LabelOn(face, plugin.buttonStyle);
    if (face.pushed && label.moves) OffsetRect(&place, 1, 1);
    const UINT format =
        DT_CENTER | DT_VCENTER | DT_SINGLELINE | ((item.itemState & ODS_NOACCEL) ? DT_HIDEPREFIX : 0u);
    SelectObject(face.dc, reinterpret_cast<HFONT>(SendMessageA(item.hwndItem, WM_GETFONT, 0, 0)));
    SetBkMode(face.dc, TRANSPARENT);
    if (face.disabled && label.engraved) {
        RECT below = place;
        OffsetRect(&below, 1, 1);
        SetTextColor(face.dc, GetSysColor(COLOR_BTNHIGHLIGHT));
        DrawTextA(face.dc, text, -1, &below, format);
    }
    SetTextColor(face.dc, label.color);
    DrawTextA(face.dc, text, -1, &place, format);
}

}  // namespace

void GiveButtonLook(HWND dialog, int id) {
    const HWND button = GetDlgItem(dialog, id);
    if (!button) return;
    if (plugin.buttonFont)
        SendMessageA(button, WM_SETFONT, reinterpret_cast<WPARAM>(plugin.buttonFont), FALSE);
    if (plugin.buttonStyle == 0 || GetPropA(button, kProcedureProperty)) return;
    const LONG_PTR style = GetWindowLongPtrA(button, GWL_STYLE);
    // Where its own procedure cannot be kept, the button stays an ordinary one.
    if (!SetPropA(button, kProcedureProperty,
                  reinterpret_cast<HANDLE>(GetWindowLongPtrA(button, GWLP_WNDPROC))))
        return;
    SetDefault(button, (style & BS_TYPEMASK) == BS_DEFPUSHBUTTON);
    SetWindowLongPtrA(button, GWL_STYLE, (style & ~BS_TYPEMASK) | BS_OWNERDRAW);
    SetWindowLongPtrA(button, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(ButtonProcedure));
    InvalidateRect(button, nullptr, FALSE);
}

BOOL DrawPushButton(const DRAWITEMSTRUCT& item) {
    if (item.CtlType != ODT_BUTTON || !GetPropA(item.hwndItem, kProcedureProperty)) return FALSE;
    const bool focused = (item.itemState & ODS_FOCUS) != 0;
    const bool disabled = (item.itemState & ODS_DISABLED) != 0;
    const bool pointed = hotButton == item.hwndItem || (item.itemState & ODS_HOTLIGHT) != 0;
    const ButtonFace face = {.dc = item.hDC,
                             .area = item.rcItem,
                             .pushed = (item.itemState & ODS_SELECTED) != 0,
                             .hot = pointed && !disabled,
                             .isDefault = IsDefault(item.hwndItem),
                             .focused = focused,
                             .ringed = focused && !(item.itemState & ODS_NOFOCUSRECT),
                             .disabled = disabled};
    const SavedContext saved(item.hDC);
    DrawButtonFace(face, plugin.buttonStyle);
    DrawLabel(item, face);
    if (face.ringed && LabelOn(face, plugin.buttonStyle).dotted) {
        RECT ring = face.area;
        InflateRect(&ring, -4, -4);
        SetTextColor(item.hDC, RGB(0, 0, 0));
        SetBkColor(item.hDC, RGB(255, 255, 255));
        DrawFocusRect(item.hDC, &ring);
    }
    return TRUE;
}

}  // namespace kfx
