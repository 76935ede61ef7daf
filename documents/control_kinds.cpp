// SPDX-License-Identifier: MIT
#include "documents/control_kinds.h"

#include <commctrl.h>

#include <cstdio>
#include <cstring>

#include "documents/document_text.h"
#include "framework/number_text.h"
#include "framework/settings.h"
#include "resources/resource_ids.h"

namespace kfx {
namespace {

constexpr char kPreviousProcedure[] = "KestrelFxPreviousProcedure";

constexpr int kAnyNotification = -1;

// What a kind does. A null function: the kind takes no part in that.
struct KindRow {
    BoundKind kind = BoundKind::None;
    const char* word = nullptr;  // six letters, as documents name the kind
    WNDPROC procedure = nullptr;
    void (*write)(HWND control, const char* word, std::FILE* file) = nullptr;
    void (*set)(HWND control, const char* value) = nullptr;   // puts a line's value into the control
    void (*refresh)(HWND control, void* variable) = nullptr;  // after a line has been applied
    void (*store)(HWND control, void* variable) = nullptr;    // after the user has changed the control
    void (*showValue)(HWND control) = nullptr;                // in a label, after it has been stored
    bool ignoresScroll = false;                               // the window moves the slider
    int notification = kAnyNotification;                      // the one that means a change
    Follow follow = Follow::None;                             // None: no notification means a change
};

template <BoundKind kKind>
LRESULT CALLBACK KindProcedure(HWND control, UINT message, WPARAM word, LPARAM pointer);

void StoreNumber(void* variable, int32_t value) { std::memcpy(variable, &value, sizeof value); }

int32_t ParseSigned(const char* text) { return static_cast<int32_t>(ParseDecimal(text)); }

// Number fields: the range stands in the companion control's text.

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
    // Beyond what a range can hold, an unsigned number is simply too large, not negative.
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

// The variable is not the field's own: the control whose companion this field is holds it.
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

void SetColorText(HWND button, uint32_t color) {
    char text[16];
    std::snprintf(text, sizeof text, "%u", color);
    SetWindowTextA(button, text);
}

void WriteColor(HWND button, const char* word, std::FILE* file) {
    WriteUnsignedLine(file, word, GetDlgCtrlID(button), ReadColorText(button));
}

void SetColor(HWND button, const char* value) { SetColorText(button, ParseDecimal(value)); }

// The swatch shows the variable; the button has drawn itself with the old one when its text changed.
void StoreColor(HWND button, void* variable, uint32_t color) {
    StoreNumber(variable, static_cast<int32_t>(color));
    InvalidateRect(button, nullptr, FALSE);
}

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

// The label shows the number of the line even where the slider's range stops short of it.
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

const KindRow* RowOf(BoundKind kind) {
    for (const KindRow& row : kKinds)
        if (row.kind == kind) return &row;
    return nullptr;
}

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

bool IsDropped(HWND list) { return SendMessageA(list, CB_GETDROPPEDSTATE, 0, 0) != 0; }

// Keys and the wheel change the row of a closed list, but the list sends no CBN_CLOSEUP: it is sent here.
// While the list handles a wheel message it may send itself key messages, for which this function runs first
// and sends CBN_CLOSEUP. The variable then holds the new row already, and it is not sent again.
LRESULT OnListInput(HWND list, UINT message, WPARAM word, LPARAM pointer) {
    const auto pass = [=] { return CallWindowProcA(PreviousProcedure(list), list, message, word, pointer); };
    if (IsDropped(list)) return pass();
    const int32_t before = Selection<CB_GETCURSEL>(list);
    const LRESULT answer = pass();
    const int32_t after = Selection<CB_GETCURSEL>(list);
    const void* variable = VariableOf(list);
    if (after == before || !variable || IsDropped(list)) return answer;
    int32_t taken;
    std::memcpy(&taken, variable, sizeof taken);
    if (taken != after)
        SendMessageA(GetParent(list), WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(list), CBN_CLOSEUP),
                     reinterpret_cast<LPARAM>(list));
    return answer;
}

LRESULT OnMessage(const KindRow& row, HWND control, UINT message, WPARAM word, LPARAM pointer) {
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

void ChooseColor(HWND button, ChooseColorFunction chooseColor) {
    const void* variable = VariableOf(button);
    if (!variable) return;
    uint32_t color;
    std::memcpy(&color, variable, sizeof color);
    if (chooseColor(&color)) SetColorButton(button, color);
}

template <BoundKind kKind>
LRESULT CALLBACK KindProcedure(HWND control, UINT message, WPARAM word, LPARAM pointer) {
    return OnMessage(*RowOf(kKind), control, message, word, pointer);
}

}  // namespace

void BindControl(HWND control, BoundKind kind, void* variable) {
    const KindRow* row = RowOf(kind);
    if (!control || !row) return;
    const bool boundBefore = KindOf(control) != BoundKind::None;
    // Binding again only changes kind and variable; the control's own procedure is known already. Where it
    // cannot be kept, the control stays what it is.
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
    const LONG_PTR procedure = GetWindowLongPtrA(control, GWLP_WNDPROC);
    for (const KindRow& row : kKinds)
        if (reinterpret_cast<LONG_PTR>(row.procedure) == procedure) return row.kind;
    return BoundKind::None;
}

void* VariableOf(HWND control) { return reinterpret_cast<void*>(GetWindowLongPtrA(control, GWLP_USERDATA)); }

void StoreControl(HWND control) {
    const KindRow* row = RowOf(KindOf(control));
    if (!row || !row->store) return;
    void* variable = VariableOf(control);
    if (variable || row->kind == BoundKind::CompanionNumber) row->store(control, variable);
}

void SetColorButton(HWND control, uint32_t color) {
    SetColorText(control, color);
    if (void* variable = VariableOf(control)) StoreColor(control, variable, color);
}

Follow OnControlNotification(HWND control, int notification, ChooseColorFunction chooseColor) {
    const KindRow* row = RowOf(KindOf(control));
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
