// SPDX-License-Identifier: MIT
#include "window/owner_drawn.h"

#include "documents/control_kinds.h"
#include "window/guards.h"
#include "window/plugin_state.h"

namespace kfx {

void DrawColorButton(const DRAWITEMSTRUCT& item) {
    const SavedContext saved(item.hDC);
    const bool disabled = (item.itemState & ODS_DISABLED) != 0;
    const bool pushed = (item.itemState & ODS_SELECTED) != 0;
    RECT area = item.rcItem;
    FillRect(item.hDC, &area, GetSysColorBrush(COLOR_BTNFACE));
    DrawEdge(item.hDC, &area, pushed ? EDGE_SUNKEN : EDGE_RAISED, BF_RECT);
    InflateRect(&area, -4, -3);
    if (pushed) OffsetRect(&area, 1, 1);
    const auto* color = static_cast<const uint32_t*>(VariableOf(item.hwndItem));
    if (color && !disabled) {
        const GdiObject<HBRUSH> brush(CreateSolidBrush(*color & 0xFFFFFF));
        FillRect(item.hDC, &area, brush.handle);
    }
    FrameRect(item.hDC, &area, GetSysColorBrush(disabled ? COLOR_BTNSHADOW : COLOR_WINDOWFRAME));
    if ((item.itemState & ODS_FOCUS) && !(item.itemState & ODS_NOFOCUSRECT)) {
        InflateRect(&area, 2, 1);
        DrawFocusRect(item.hDC, &area);
    }
}

void DrawFlatBox(const DRAWITEMSTRUCT& item, bool isPath) {
    const SavedContext saved(item.hDC);
    RECT area = item.rcItem;
    FillRect(item.hDC, &area, GetSysColorBrush(COLOR_BTNHIGHLIGHT));
    FrameRect(item.hDC, &area, GetSysColorBrush(COLOR_BTNSHADOW));
    InflateRect(&area, -4, -2);
    char text[kTextBytes] = "";
    GetWindowTextA(item.hwndItem, text, sizeof text);
    SelectObject(item.hDC, reinterpret_cast<HFONT>(SendMessageA(item.hwndItem, WM_GETFONT, 0, 0)));
    SetBkMode(item.hDC, TRANSPARENT);
    SetTextColor(item.hDC, GetSysColor(COLOR_BTNTEXT));
    DrawTextA(item.hDC, text, -1, &area,
              DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX | (isPath ? DT_PATH_ELLIPSIS : 0u));
}

}  // namespace kfx
