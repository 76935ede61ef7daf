// SPDX-License-Identifier: MIT
#include "window/captions.h"

#include <algorithm>

#include "framework/settings.h"
#include "window/guards.h"

namespace kfx {
namespace {

constexpr char kProcedureProperty[] = "KestrelCaptionProcedure";  // the procedure before ours

constexpr LONG kSlack = 3;  // dialog units right of the text

void DrawCaption(HWND caption, HDC dc) {
    const HWND window = GetParent(caption);
    RECT place = {}, slack = {0, 0, kSlack, 0};
    GetWindowRect(caption, &place);
    MapDialogRect(window, &slack);
    RECT area = {0, 0, place.right - place.left, place.bottom - place.top};
    const SavedContext saved(dc);
    // The colours of texts, and the brush behind them, are the window's.
    const LRESULT background = SendMessageA(window, WM_CTLCOLORSTATIC, reinterpret_cast<WPARAM>(dc),
                                            reinterpret_cast<LPARAM>(caption));
    FillRect(dc, &area, background ? reinterpret_cast<HBRUSH>(background) : GetSysColorBrush(COLOR_3DFACE));
    if (!IsWindowEnabled(caption)) SetTextColor(dc, GetSysColor(COLOR_GRAYTEXT));
    SelectObject(dc, reinterpret_cast<HFONT>(SendMessageA(caption, WM_GETFONT, 0, 0)));
    char text[kTextBytes] = "";
    GetWindowTextA(caption, text, sizeof text);
    const auto style = static_cast<DWORD>(GetWindowLongPtrA(caption, GWL_STYLE));
    const UINT format = DT_SINGLELINE | DT_NOCLIP | (style & SS_NOPREFIX ? DT_NOPREFIX : 0);
    RECT needed = area;
    DrawTextA(dc, text, -1, &needed, format | DT_CALCRECT);
    // As far as there is room on the left.
    area.right -= std::clamp<LONG>(area.right - needed.right, 0, slack.right);
    DrawTextA(dc, text, -1, &area, format | DT_RIGHT);
}

// False: it could not begin.
bool PaintCaption(HWND caption) {
    PAINTSTRUCT paint;
    if (!BeginPaint(caption, &paint)) return false;
    DrawCaption(caption, paint.hdc);
    EndPaint(caption, &paint);
    return true;
}

LRESULT CALLBACK CaptionProcedure(HWND caption, UINT message, WPARAM word, LPARAM data) {
    const HANDLE known = GetPropA(caption, kProcedureProperty);
    const WNDPROC previous = known ? reinterpret_cast<WNDPROC>(known) : DefWindowProcA;
    switch (message) {
        case WM_PAINT:
            if (PaintCaption(caption)) return 0;
            break;
        case WM_PRINTCLIENT:
            DrawCaption(caption, reinterpret_cast<HDC>(word));
            return 0;
        case WM_ENABLE:
        case WM_SETTEXT: {
            // The control draws the change at once.
            const LRESULT result = CallWindowProcA(previous, caption, message, word, data);
            InvalidateRect(caption, nullptr, TRUE);
            return result;
        }
        case WM_NCDESTROY:
            RemovePropA(caption, kProcedureProperty);
            break;
    }
    return CallWindowProcA(previous, caption, message, word, data);
}

BOOL CALLBACK MakeCaption(HWND control, LPARAM) {
    char className[16] = "";
    GetClassNameA(control, className, sizeof className);
    const auto style = static_cast<DWORD>(GetWindowLongPtrA(control, GWL_STYLE));
    if (lstrcmpiA(className, "static") != 0 || (style & SS_TYPEMASK) != SS_RIGHT) return TRUE;
    if (GetPropA(control, kProcedureProperty)) return TRUE;
    const LONG_PTR procedure = GetWindowLongPtrA(control, GWLP_WNDPROC);
    if (SetPropA(control, kProcedureProperty, reinterpret_cast<HANDLE>(procedure)))
        SetWindowLongPtrA(control, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(CaptionProcedure));
    InvalidateRect(control, nullptr, TRUE);
    return TRUE;
}

}  // namespace

void MakeCaptions(HWND window) { EnumChildWindows(window, MakeCaption, 0); }

}  // namespace kfx
