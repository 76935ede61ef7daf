// SPDX-License-Identifier: MIT
#include "window/push_buttons.h"

#include "window/guards.h"
#include "window/plugin_state.h"

namespace kfx {
namespace {

constexpr char kProcedureProperty[] = "KestrelButtonProcedure";  // the procedure before ours

// The user-data word of a converted button: whether Enter presses it now.
bool IsDefault(HWND button) { return GetWindowLongPtrA(button, GWLP_USERDATA) != 0; }
void SetDefault(HWND button, bool isDefault) { SetWindowLongPtrA(button, GWLP_USERDATA, isDefault); }

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
        case WM_ERASEBKGND:
            return TRUE;  // every pixel is drawn
        case WM_NCDESTROY:
            RemovePropA(button, kProcedureProperty);
            break;
    }
    return CallWindowProcA(previous, button, message, word, data);
}

COLORREF Mix(COLORREF a, COLORREF b, int percentOfB) {
    const auto channel = [=](int shift) {
        const int from = static_cast<int>(a >> shift & 255), to = static_cast<int>(b >> shift & 255);
        return static_cast<COLORREF>(from + (to - from) * percentOfB / 100) << shift;
    };
    return channel(0) | channel(8) | channel(16);
}

void FillPlain(HDC dc, const RECT& area, COLORREF color) {
    const GdiObject<HBRUSH> brush(CreateSolidBrush(color));
    FillRect(dc, &area, brush.handle);
}

void FillGradient(HDC dc, const RECT& area, COLORREF top, COLORREF bottom) {
    const int height = area.bottom - area.top;
    for (int y = 0; y < height; ++y) {
        const RECT line = {area.left, area.top + y, area.right, area.top + y + 1};
        FillPlain(dc, line, Mix(top, bottom, 100 * y / (height > 1 ? height - 1 : 1)));
    }
}

void Outline(HDC dc, const RECT& area, COLORREF color, int rounding) {
    const GdiObject<HPEN> pen(CreatePen(PS_SOLID, 1, color));
    const SavedContext saved(dc);
    SelectObject(dc, pen.handle);
    SelectObject(dc, GetStockObject(NULL_BRUSH));
    RoundRect(dc, area.left, area.top, area.right, area.bottom, rounding, rounding);
}

struct ButtonFace {
    HDC dc;
    RECT area;
    bool pushed;
    bool strong;  // default or focused
    bool disabled;
};

// Look 1: raised edges, as on the system's classic buttons.
void DrawRaised(const ButtonFace& face) {
    RECT area = face.area;
    FillPlain(face.dc, area, GetSysColor(COLOR_BTNFACE));
    if (face.strong) {
        FrameRect(face.dc, &area, GetSysColorBrush(COLOR_WINDOWFRAME));
        InflateRect(&area, -1, -1);
    }
    DrawEdge(face.dc, &area, face.pushed ? EDGE_SUNKEN : EDGE_RAISED, BF_RECT | (face.pushed ? BF_FLAT : 0));
}

// Look 2: flat, one line round a slightly lighter face.
void DrawFlat(const ButtonFace& face) {
    const COLORREF ground = GetSysColor(COLOR_BTNFACE), light = GetSysColor(COLOR_BTNHIGHLIGHT);
    const COLORREF shadow = GetSysColor(COLOR_BTNSHADOW), accent = GetSysColor(COLOR_HIGHLIGHT);
    FillPlain(face.dc, face.area, face.pushed ? Mix(ground, shadow, 40) : Mix(ground, light, 60));
    const COLORREF line = face.disabled ? Mix(ground, shadow, 50) : face.strong ? accent : shadow;
    Outline(face.dc, face.area, line, 0);
    if (face.strong) {
        RECT inner = face.area;
        InflateRect(&inner, -1, -1);
        Outline(face.dc, inner, Mix(ground, accent, 45), 0);
    }
}

// Look 3: rounded, lit from above.
void DrawRounded(const ButtonFace& face) {
    const COLORREF ground = GetSysColor(COLOR_BTNFACE), light = GetSysColor(COLOR_BTNHIGHLIGHT);
    const COLORREF shadow = GetSysColor(COLOR_BTNSHADOW), accent = GetSysColor(COLOR_HIGHLIGHT);
    FillPlain(face.dc, face.area, ground);
    {
        const GdiObject<HRGN> shape(CreateRoundRectRgn(face.area.left, face.area.top, face.area.right + 1,
                                                       face.area.bottom + 1, 7, 7));
        const SavedContext saved(face.dc);
        ExtSelectClipRgn(face.dc, shape.handle, RGN_AND);
        const COLORREF top = face.pushed ? Mix(ground, shadow, 45) : Mix(ground, light, 90);
        const COLORREF bottom =
            face.pushed ? Mix(ground, light, 20) : Mix(ground, shadow, face.disabled ? 10 : 35);
        FillGradient(face.dc, face.area, top, bottom);
    }
    const COLORREF line =
        face.strong ? Mix(shadow, accent, 80) : Mix(shadow, RGB(0, 0, 0), face.disabled ? 0 : 30);
    Outline(face.dc, face.area, line, 6);
}

void DrawLabel(const DRAWITEMSTRUCT& item, const ButtonFace& face) {
    char text[kTextBytes] = "";
    GetWindowTextA(item.hwndItem, text, sizeof text);
    RECT place = face.area;
    InflateRect(&place, -3, -1);
    if (face.pushed) OffsetRect(&place, 1, 1);
    const UINT format =
        DT_CENTER | DT_VCENTER | DT_SINGLELINE | ((item.itemState & ODS_NOACCEL) ? DT_HIDEPREFIX : 0u);
    SelectObject(face.dc, reinterpret_cast<HFONT>(SendMessageA(item.hwndItem, WM_GETFONT, 0, 0)));
    SetBkMode(face.dc, TRANSPARENT);
    if (face.disabled) {
        RECT below = place;
        OffsetRect(&below, 1, 1);
        SetTextColor(face.dc, GetSysColor(COLOR_BTNHIGHLIGHT));
        DrawTextA(face.dc, text, -1, &below, format);
    }
    SetTextColor(face.dc, GetSysColor(face.disabled ? COLOR_GRAYTEXT : COLOR_BTNTEXT));
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
    const ButtonFace face = {.dc = item.hDC,
                             .area = item.rcItem,
                             .pushed = (item.itemState & ODS_SELECTED) != 0,
                             .strong = IsDefault(item.hwndItem) || focused,
                             .disabled = (item.itemState & ODS_DISABLED) != 0};
    const SavedContext saved(item.hDC);
    if (plugin.buttonStyle == 2)
        DrawFlat(face);
    else if (plugin.buttonStyle == 3)
        DrawRounded(face);
    else
        DrawRaised(face);
    DrawLabel(item, face);
    if (focused && !(item.itemState & ODS_NOFOCUSRECT)) {
        RECT ring = face.area;
        InflateRect(&ring, -4, -4);
        SetTextColor(item.hDC, RGB(0, 0, 0));
        SetBkColor(item.hDC, RGB(255, 255, 255));
        DrawFocusRect(item.hDC, &ring);
    }
    return TRUE;
}

}  // namespace kfx
