// SPDX-License-Identifier: MIT
// Drawing the rows of the list of steps: a thumbnail, the name, the parameters.

#include "commands/text_windows.h"
#include "stage/controls.h"
#include "stage/drawing_parts.h"
#include "stage/picture_drawing.h"
#include "stage/stage.h"

namespace kfx::stage {

using namespace commands;

namespace {

constexpr int kRowMargin = 6;  // device-independent pixels
constexpr int kSquare = 4;     // behind transparent parts of a thumbnail, pixels

void DrawThumbnail(HDC target, const RECT& area, const Thumbnail& thumbnail) {
    if (thumbnail.rgba.empty()) return;
    const SIZE room = {area.right - area.left, area.bottom - area.top};
    const bool wide = thumbnail.size.cx >= thumbnail.size.cy;
    const SIZE shown = {wide ? room.cx : MulDiv(room.cy, thumbnail.size.cx, thumbnail.size.cy),
                        wide ? MulDiv(room.cx, thumbnail.size.cy, thumbnail.size.cx) : room.cy};
    const LONG left = area.left + (room.cx - shown.cx) / 2, top = area.top + (room.cy - shown.cy) / 2;
    const RECT place = {left, top, left + shown.cx, top + shown.cy};
    DrawPicture(target, place, place, thumbnail.rgba.data(), thumbnail.size, ChequeredGround(kSquare));
}

std::wstring RowText(const Step& step) {
    return Widen(step.summary.empty() ? step.name : step.name + ", " + step.summary);
}

// Steps keep their number as long as they are there, so that equal texts of two steps are told apart.
bool IsRowOf(HWND list, int row, const Step& step) {
    return static_cast<uint64_t>(SendMessageW(list, LB_GETITEMDATA, static_cast<WPARAM>(row), 0)) ==
           step.number;
}

void AddRow(HWND list, const Step& step) {
    const LRESULT row = SendMessageW(list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(RowText(step).c_str()));
    if (row >= 0)
        SendMessageW(list, LB_SETITEMDATA, static_cast<WPARAM>(row), static_cast<LPARAM>(step.number));
}

// Takes rows out until the ones that stay are the first steps, in their order.
void RemoveGoneRows(HWND list, const std::vector<Step>& steps) {
    int row = 0;
    for (const Step& step : steps) {
        const int count = static_cast<int>(SendMessageW(list, LB_GETCOUNT, 0, 0));
        int found = row;
        while (found < count && !IsRowOf(list, found, step)) ++found;
        if (found == count) break;
        for (; found > row; --found) SendMessageW(list, LB_DELETESTRING, static_cast<WPARAM>(row), 0);
        ++row;
    }
    while (SendMessageW(list, LB_GETCOUNT, 0, 0) > row)
        SendMessageW(list, LB_DELETESTRING, static_cast<WPARAM>(row), 0);
}

}  // namespace

void UpdateHistoryList(const Stage& stage) {
    const HWND list = stage.controls.history;
    const auto& steps = stage.history.steps;
    RemoveGoneRows(list, steps);
    const auto kept = static_cast<size_t>(SendMessageW(list, LB_GETCOUNT, 0, 0));
    for (size_t row = kept; row < steps.size(); ++row) AddRow(list, steps[row]);
    if (SendMessageW(list, LB_GETCURSEL, 0, 0) == static_cast<LRESULT>(stage.history.current)) return;
    SendMessageW(list, LB_SETCURSEL, stage.history.current, 0);
    // The row of the step before shows the other colours, too.
    InvalidateRect(list, nullptr, FALSE);
}

void DrawHistoryRow(const Stage& stage, const DRAWITEMSTRUCT& item) {
    if (item.itemID >= stage.history.steps.size()) return;
    const Step& step = stage.history.steps[item.itemID];
    const bool selected = item.itemID == stage.history.current;
    const int text = selected ? COLOR_HIGHLIGHTTEXT : COLOR_WINDOWTEXT;
    FillRect(item.hDC, &item.rcItem, GetSysColorBrush(selected ? COLOR_HIGHLIGHT : COLOR_WINDOW));
    const int margin = Scaled(stage, kRowMargin);
    RECT area = item.rcItem;
    InflateRect(&area, -margin, -margin);
    const RECT picture = {area.left, area.top, area.left + (area.bottom - area.top), area.bottom};
    DrawThumbnail(item.hDC, picture, step.thumbnail);
    area.left = picture.right + margin;
    TEXTMETRICW metrics = {};
    const HGDIOBJ before = SelectObject(item.hDC, stage.controls.boldFont);
    GetTextMetricsW(item.hDC, &metrics);
    SelectObject(item.hDC, before);
    RECT name = area;
    name.bottom = name.top + metrics.tmHeight;
    DrawLine(item.hDC, name, step.name, stage.controls.boldFont, text, DT_SINGLELINE | DT_END_ELLIPSIS);
    area.top = name.bottom;
    const std::string detail = item.itemID == 0 ? FileNameOf(stage.document.path) : step.summary;
    DrawLine(item.hDC, area, detail, stage.controls.font, text,
             DT_WORDBREAK | DT_EDITCONTROL | DT_END_ELLIPSIS);
    if ((item.itemState & ODS_FOCUS) && !(item.itemState & ODS_NOFOCUSRECT))
        DrawFocusRect(item.hDC, &item.rcItem);
}

}  // namespace kfx::stage
