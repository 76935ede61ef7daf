// SPDX-License-Identifier: MIT
#include "documents/control_kinds.h"

#include <cstdio>
#include <cstring>

#include "documents/document_text.h"
#include "documents/kind_table.h"
#include "framework/number_text.h"

namespace kfx {
namespace {

constexpr char kPreviousProcedure[] = "KestrelFxPreviousProcedure";

LRESULT OnApplyLine(const KindRow& row, HWND control, const char* line) {
    const char* value = row.word ? FindLineValue(line, row.word) : nullptr;
    if (!value) return 0;
    row.set(control, value);
    if (void* variable = VariableOf(control)) row.refresh(control, variable);
    return 1;
}

WNDPROC PreviousProcedure(HWND control) {
    const HANDLE previous = GetPropA(control, kPreviousProcedure);
    return previous ? reinterpret_cast<WNDPROC>(previous) : DefWindowProcA;
}

bool IsInput(UINT message) {
    return (message >= WM_KEYFIRST && message <= WM_KEYLAST) ||
           (message >= WM_MOUSEFIRST && message <= WM_MOUSELAST);
}

int32_t SelectedRow(HWND list) { return static_cast<int32_t>(SendMessageA(list, CB_GETCURSEL, 0, 0)); }

bool IsDropped(HWND list) { return SendMessageA(list, CB_GETDROPPEDSTATE, 0, 0) != 0; }

// Keys and the wheel change the row of a closed list, but the list sends no CBN_CLOSEUP: it is sent here.
// While the list handles a wheel message it may send itself key messages, for which this function runs first
// and sends CBN_CLOSEUP. The variable then holds the new row already, and it is not sent again.
LRESULT OnListInput(HWND list, UINT message, WPARAM word, LPARAM pointer) {
    const auto pass = [=] { return CallWindowProcA(PreviousProcedure(list), list, message, word, pointer); };
    if (IsDropped(list)) return pass();
    const int32_t before = SelectedRow(list);
    const LRESULT answer = pass();
    const int32_t after = SelectedRow(list);
    const void* variable = VariableOf(list);
    if (after == before || !variable || IsDropped(list)) return answer;
    int32_t taken;
    std::memcpy(&taken, variable, sizeof taken);
    if (taken != after)
        SendMessageA(GetParent(list), WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(list), CBN_CLOSEUP),
                     reinterpret_cast<LPARAM>(list));
    return answer;
}

void ChooseColor(HWND button, ChooseColorFunction chooseColor) {
    const void* variable = VariableOf(button);
    if (!variable) return;
    uint32_t color;
    std::memcpy(&color, variable, sizeof color);
    if (chooseColor(&color)) SetColorButton(button, color);
}

}  // namespace

LRESULT OnControlMessage(const KindRow& row, HWND control, UINT message, WPARAM word, LPARAM pointer) {
    if (message == kMessageWriteLine && row.write) {
        row.write(control, row.word, reinterpret_cast<std::FILE*>(pointer));
        return 0;
    }
    if (message == kMessageApplyLine && row.word)
        return OnApplyLine(row, control, reinterpret_cast<const char*>(pointer));
    if (message == WM_HSCROLL && row.ignoresScroll) return 0;
    if (row.kind == BoundKind::List && IsInput(message)) return OnListInput(control, message, word, pointer);
    const WNDPROC previous = PreviousProcedure(control);
    if (message == WM_NCDESTROY) RemovePropA(control, kPreviousProcedure);
    return CallWindowProcA(previous, control, message, word, pointer);
}

void BindControl(HWND control, BoundKind kind, void* variable) {
    const KindRow* row = RowOf(kind);
    if (!control || !row) return;
    const bool boundBefore = KindOf(control) != BoundKind::None;
    // Binding again only changes kind and variable: the control's own procedure is kept already. Where it
    // cannot be kept, the control is not bound.
    if (!boundBefore && !SetPropA(control, kPreviousProcedure,
                                  reinterpret_cast<HANDLE>(GetWindowLongPtrA(control, GWLP_WNDPROC))))
        return;
    SetWindowLongPtrA(control, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(variable));
    SetWindowLongPtrA(control, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(row->procedure));
    if (kind == BoundKind::ColorButton && variable) {
        uint32_t color;
        std::memcpy(&color, variable, sizeof color);
        SetColorText(control, color);
    }
}

BoundKind KindOf(HWND control) {
    const KindRow* row = RowOfControl(control);
    return row ? row->kind : BoundKind::None;
}

void* VariableOf(HWND control) { return reinterpret_cast<void*>(GetWindowLongPtrA(control, GWLP_USERDATA)); }

void StoreControl(HWND control) {
    const KindRow* row = RowOfControl(control);
    if (!row || !row->store) return;
    void* variable = VariableOf(control);
    if (variable || row->kind == BoundKind::CompanionNumber) row->store(control, variable);
}

void SetColorButton(HWND control, uint32_t color) {
    SetColorText(control, color);
    if (void* variable = VariableOf(control)) StoreColor(control, variable, color);
}

Follow OnControlNotification(HWND control, int notification, ChooseColorFunction chooseColor) {
    const KindRow* row = RowOfControl(control);
    if (!row || row->follow == Follow::None) return Follow::None;
    if (row->notification != kAnyNotification && row->notification != notification) return Follow::None;
    if (row->kind == BoundKind::ColorButton)
        ChooseColor(control, chooseColor);
    else
        StoreControl(control);
    if (row->showValue) row->showValue(control);
    return row->follow;
}

void ShowSliderPosition(HWND slider, int32_t position) {
    const int label = GetDlgCtrlID(slider) + 1;
    SetDlgItemInt(GetParent(slider), label, static_cast<UINT>(ShownPosition(label, position)), TRUE);
}

}  // namespace kfx
