// SPDX-License-Identifier: MIT
#include "documents/kind_table.h"

#include <commctrl.h>

#include <cstring>

#include "documents/document_text.h"
#include "framework/number_text.h"
#include "framework/settings.h"
#include "resources/resource_ids.h"

namespace kfx {
namespace {

template <BoundKind kKind>
LRESULT CALLBACK KindProcedure(HWND control, UINT message, WPARAM word, LPARAM pointer) {
    return OnControlMessage(*RowOf(kKind), control, message, word, pointer);
}

void StoreNumber(void* variable, int32_t value) { std::memcpy(variable, &value, sizeof value); }

int32_t ParseSigned(const char* text) { return static_cast<int32_t>(ParseDecimal(text)); }

// Number fields: the range is the text of the companion control.

ControlRange FieldRange(HWND field) {
    char text[kTextBytes] = "";
    GetDlgItemTextA(GetParent(field), GetDlgCtrlID(field) + COMPANION_OFFSET, text, sizeof text);
    ControlRange range;
    ParseControlRange(text, &range);
    return range;
}

int32_t ReadField(HWND field) {
    const ControlRange range = FieldRange(field);
    const BOOL isSigned = range.least < 0;
    const UINT number = GetDlgItemInt(GetParent(field), GetDlgCtrlID(field), nullptr, isSigned);
    // An unsigned number beyond INT32_MAX is too large, not negative.
    if (!isSigned && number > static_cast<UINT>(INT32_MAX)) return range.most;
    return ClampToRange(range, static_cast<int32_t>(number));
}

void WriteField(HWND field, const char* word, std::FILE* file) {
    WriteNumberLine(file, word, GetDlgCtrlID(field), ReadField(field));
}

void SetField(HWND field, const char* value) {
    SetDlgItemInt(GetParent(field), GetDlgCtrlID(field), ParseDecimal(value), FALSE);
}

void SetSignedField(HWND field, const char* value) {
    SetDlgItemInt(GetParent(field), GetDlgCtrlID(field), ParseDecimal(value), TRUE);
}

void StoreField(HWND field, void* variable) { StoreNumber(variable, ReadField(field)); }

void StoreFieldAsText(HWND field, void* variable) {
    std::snprintf(static_cast<char*>(variable), kTextBytes, "%d", ReadField(field));
}

// The variable is that of the control whose companion the field is.
void StoreCompanion(HWND field, void*) {
    const HWND owner = GetDlgItem(GetParent(field), GetDlgCtrlID(field) - COMPANION_OFFSET);
    void* variable = owner ? VariableOf(owner) : nullptr;
    if (variable) StoreField(field, variable);
}

// Check boxes.

int32_t IsChecked(HWND box) { return SendMessageA(box, BM_GETCHECK, 0, 0) == BST_CHECKED; }

void WriteCheckBox(HWND box, const char* word, std::FILE* file) {
    WriteNumberLine(file, word, GetDlgCtrlID(box), IsChecked(box));
}

void SetCheckBox(HWND box, const char* value) { SendMessageA(box, BM_SETCHECK, ParseDecimal(value), 0); }

void RefreshCheckBox(HWND box, void* variable) {
    StoreNumber(variable, SendMessageA(box, BM_GETCHECK, 0, 0) != BST_UNCHECKED);
}

void StoreCheckBox(HWND box, void* variable) { StoreNumber(variable, IsChecked(box)); }

// Texts.

void WriteText(HWND control, const char* word, std::FILE* file) {
    char text[kDocumentValueBytes] = "";
    GetWindowTextA(control, text, sizeof text);
    WriteTextLine(file, word, GetDlgCtrlID(control), text);
}

void SetText(HWND control, const char* value) { SetWindowTextA(control, value); }

void StoreText(HWND control, void* variable) {
    GetWindowTextA(control, static_cast<char*>(variable), kTextBytes);
}

// Font boxes are saved but not restored: documents select the empty name, which the list does not find.
void SetFontBox(HWND control, const char*) {
    const char wanted[kTextBytes] = "";
    SendMessageA(control, CB_SELECTSTRING, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(wanted));
}

// Colour buttons: the text is the colour.

uint32_t ReadColorText(HWND button) {
    char text[kTextBytes] = "";
    GetWindowTextA(button, text, sizeof text);
    return ParseDecimal(text);
}

void WriteColor(HWND button, const char* word, std::FILE* file) {
    WriteUnsignedLine(file, word, GetDlgCtrlID(button), ReadColorText(button));
}

void SetColor(HWND button, const char* value) { SetColorText(button, ParseDecimal(value)); }

void RefreshColor(HWND button, void* variable) { StoreColor(button, variable, ReadColorText(button)); }

// Drop-down lists and list boxes: -1 when nothing is selected.

template <UINT kGetSelection>
int32_t Selection(HWND list) {
    return static_cast<int32_t>(SendMessageA(list, kGetSelection, 0, 0));
}

template <UINT kGetSelection>
void WriteSelection(HWND list, const char* word, std::FILE* file) {
    WriteNumberLine(file, word, GetDlgCtrlID(list), Selection<kGetSelection>(list));
}

template <UINT kSetSelection>
void SetSelection(HWND list, const char* value) {
    SendMessageA(list, kSetSelection, static_cast<WPARAM>(static_cast<INT_PTR>(ParseSigned(value))), 0);
}

template <UINT kGetSelection>
void StoreSelection(HWND list, void* variable) {
    StoreNumber(variable, Selection<kGetSelection>(list));
}

// Sliders (scroll bars) and track bars.

void WriteSlider(HWND slider, const char* word, std::FILE* file) {
    WriteNumberLine(file, word, GetDlgCtrlID(slider), GetScrollPos(slider, SB_CTL));
}

// The label shows the number of the line even where it is outside the slider's range.
void SetSlider(HWND slider, const char* value) {
    SetScrollPos(slider, SB_CTL, ParseSigned(value), TRUE);
    ShowSliderPosition(slider, ParseSigned(value));
}

void StoreSlider(HWND slider, void* variable) { StoreNumber(variable, GetScrollPos(slider, SB_CTL)); }

void ShowSliderValue(HWND slider) { ShowSliderPosition(slider, GetScrollPos(slider, SB_CTL)); }

int32_t TrackBarPosition(HWND bar) { return static_cast<int32_t>(SendMessageA(bar, TBM_GETPOS, 0, 0)); }

void WriteTrackBar(HWND bar, const char* word, std::FILE* file) {
    WriteNumberLine(file, word, GetDlgCtrlID(bar), TrackBarPosition(bar));
}

void SetTrackBar(HWND bar, const char* value) { SendMessageA(bar, TBM_SETPOS, TRUE, ParseSigned(value)); }

void StoreTrackBar(HWND bar, void* variable) { StoreNumber(variable, TrackBarPosition(bar)); }

void ShowTrackBarValue(HWND bar) {
    SetDlgItemInt(GetParent(bar), GetDlgCtrlID(bar) + 1, static_cast<UINT>(TrackBarPosition(bar)), FALSE);
}

const KindRow kKinds[] = {
    {.kind = BoundKind::ColorButton,
     .word = "CLRBTN",
     .procedure = KindProcedure<BoundKind::ColorButton>,
     .write = WriteColor,
     .set = SetColor,
     .refresh = RefreshColor,
     .follow = Follow::AtOnce},
    {.kind = BoundKind::Number,
     .word = "SPNBTN",
     .procedure = KindProcedure<BoundKind::Number>,
     .write = WriteField,
     .set = SetField,
     .refresh = StoreField,
     .store = StoreField,
     .follow = Follow::AfterPause},
    {.kind = BoundKind::NumberText,
     .word = "SPNSGN",
     .procedure = KindProcedure<BoundKind::NumberText>,
     .write = WriteField,
     .set = SetSignedField,
     .refresh = StoreFieldAsText,
     .store = StoreFieldAsText,
     .follow = Follow::AfterPause},
    {.kind = BoundKind::CompanionNumber,
     .procedure = KindProcedure<BoundKind::CompanionNumber>,
     .store = StoreCompanion,
     .follow = Follow::AfterPause},
    {.kind = BoundKind::CheckBox,
     .word = "CHKBOX",
     .procedure = KindProcedure<BoundKind::CheckBox>,
     .write = WriteCheckBox,
     .set = SetCheckBox,
     .refresh = RefreshCheckBox,
     .store = StoreCheckBox,
     .follow = Follow::AfterPause},
    {.kind = BoundKind::TextField,
     .word = "TXTFLD",
     .procedure = KindProcedure<BoundKind::TextField>,
     .write = WriteText,
     .set = SetText,
     .refresh = StoreText,
     .store = StoreText,
     .notification = CBN_CLOSEUP,
     .follow = Follow::AtOnce},
    {.kind = BoundKind::List,
     .word = "CMBBOX",
     .procedure = KindProcedure<BoundKind::List>,
     .write = WriteSelection<CB_GETCURSEL>,
     .set = SetSelection<CB_SETCURSEL>,
     .refresh = StoreSelection<CB_GETCURSEL>,
     .store = StoreSelection<CB_GETCURSEL>,
     .notification = CBN_CLOSEUP,
     .follow = Follow::AtOnce},
    {.kind = BoundKind::ListBox,
     .word = "LSTBOX",
     .procedure = KindProcedure<BoundKind::ListBox>,
     .write = WriteSelection<LB_GETCURSEL>,
     .set = SetSelection<LB_SETCURSEL>,
     .refresh = StoreSelection<LB_GETCURSEL>,
     .store = StoreSelection<LB_GETCURSEL>,
     .follow = Follow::AtOnce},
    {.kind = BoundKind::Slider,
     .word = "SCROLL",
     .procedure = KindProcedure<BoundKind::Slider>,
     .write = WriteSlider,
     .set = SetSlider,
     .refresh = StoreSlider,
     .store = StoreSlider,
     .showValue = ShowSliderValue,
     .ignoresScroll = true,
     .follow = Follow::AtOnce},
    {.kind = BoundKind::TrackBar,
     .word = "TRACKB",
     .procedure = KindProcedure<BoundKind::TrackBar>,
     .write = WriteTrackBar,
     .set = SetTrackBar,
     .refresh = StoreTrackBar,
     .store = StoreTrackBar,
     .showValue = ShowTrackBarValue,
     .ignoresScroll = true,
     .follow = Follow::AtOnce},
    {.kind = BoundKind::FontBox,
     .word = "FNTBOX",
     .procedure = KindProcedure<BoundKind::FontBox>,
     .write = WriteText,
     .set = SetFontBox,
     .refresh = StoreText,
     .store = StoreText},
};

}  // namespace

const KindRow* RowOf(BoundKind kind) {
    for (const KindRow& row : kKinds)
        if (row.kind == kind) return &row;
    return nullptr;
}

const KindRow* RowOfControl(HWND control) {
    const LONG_PTR procedure = GetWindowLongPtrA(control, GWLP_WNDPROC);
    for (const KindRow& row : kKinds)
        if (reinterpret_cast<LONG_PTR>(row.procedure) == procedure) return &row;
    return nullptr;
}

void SetColorText(HWND button, uint32_t color) {
    char text[16];
    std::snprintf(text, sizeof text, "%u", color);
    SetWindowTextA(button, text);
}

void StoreColor(HWND button, void* variable, uint32_t color) {
    StoreNumber(variable, static_cast<int32_t>(color));
    InvalidateRect(button, nullptr, FALSE);
}

}  // namespace kfx
