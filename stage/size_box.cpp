// SPDX-License-Identifier: MIT
#include "stage/size_box.h"

#include <algorithm>

#include "commands/fit_options.h"
#include "commands/text_windows.h"
#include "stage/plain_dialog.h"
#include "stage/stage.h"

namespace kfx::stage {

using namespace commands;

namespace {

constexpr int kLongestNumber = 20;

constexpr PlainControl kControls[] = {
    {L"STATIC", L"The file may have at &most", 0, -1, {14, 18, 154, 36}},
    {L"EDIT", L"", WS_TABSTOP | ES_AUTOHSCROLL | ES_RIGHT, kSizeNumber, {158, 14, 218, 36}},
    {L"COMBOBOX", L"Unit", WS_TABSTOP | CBS_DROPDOWNLIST, kSizeUnit, {224, 14, 288, 134}},
    {L"STATIC",
     L"Up to four files of that size are looked for, each of which gives up something else. Then you choose.",
     SS_NOPREFIX,
     -1,
     {14, 48, 288, 84}},
    {L"BUTTON", L"&Find", WS_TABSTOP | BS_DEFPUSHBUTTON, IDOK, {116, 94, 198, 120}},
    {L"BUTTON", L"Cancel", WS_TABSTOP | BS_PUSHBUTTON, IDCANCEL, {206, 94, 288, 120}},
};

struct SizeBox {
    PlainDialog dialog;
    WantedSize* size;
};

bool HasOwnUnit(const std::string& number) {
    return !number.empty() &&
           ((number.back() >= 'A' && number.back() <= 'Z') || (number.back() >= 'a' && number.back() <= 'z'));
}

void OnInit(SizeBox* box, HWND window) {
    TakePlainDialog(&box->dialog, window);
    for (const PlainControl& control : kControls) AddControl(box->dialog, control);
    SizePlainDialog(box->dialog, {302, 132});
    const HWND number = GetDlgItem(window, kSizeNumber), unit = GetDlgItem(window, kSizeUnit);
    SendMessageW(number, EM_LIMITTEXT, kLongestNumber, 0);
    SetWindowTextW(number, Widen(box->size->number).c_str());
    for (const char* name : kSizeUnits)
        SendMessageW(unit, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(Widen(name).c_str()));
    SendMessageW(unit, CB_SETCURSEL, static_cast<WPARAM>(box->size->unit), 0);
    SetFocus(number);
    SendMessageW(number, EM_SETSEL, 0, -1);
}

void OnFind(SizeBox* box) {
    const HWND window = box->dialog.window;
    wchar_t number[kLongestNumber + 1] = L"";
    GetDlgItemTextW(window, kSizeNumber, number, kLongestNumber + 1);
    const LRESULT unit = SendDlgItemMessageW(window, kSizeUnit, CB_GETCURSEL, 0, 0);
    const WantedSize size = {Narrow(number), std::max(static_cast<int>(unit), 0)};
    uint64_t bytes = 0;
    if (BytesOfSize(size, &bytes)) {
        *box->size = size;
        EndDialog(window, IDOK);
        return;
    }
    MessageBoxW(window, L"That is no size. Write a number above 0, such as 2 or 1.5.", kStageTitle,
                MB_OK | MB_ICONWARNING);
    SetFocus(GetDlgItem(window, kSizeNumber));
    SendDlgItemMessageW(window, kSizeNumber, EM_SETSEL, 0, -1);
}

INT_PTR CALLBACK SizeProcedure(HWND window, UINT message, WPARAM word, LPARAM pointer) {
    if (message == WM_INITDIALOG) {
        SetWindowLongPtrW(window, DWLP_USER, pointer);
        OnInit(reinterpret_cast<SizeBox*>(pointer), window);
        return FALSE;  // the focus stands already
    }
    auto* box = reinterpret_cast<SizeBox*>(GetWindowLongPtrW(window, DWLP_USER));
    if (message != WM_COMMAND || !box) return FALSE;
    if (LOWORD(word) == IDOK) OnFind(box);
    if (LOWORD(word) == IDCANCEL) EndDialog(window, IDCANCEL);
    return TRUE;
}

}  // namespace

bool BytesOfSize(const WantedSize& size, uint64_t* bytes) {
    std::string text = size.number;
    std::erase(text, ' ');
    std::replace(text.begin(), text.end(), ',', '.');
    return ParseBytes(HasOwnUnit(text) ? text : text + kSizeUnits[size.unit], bytes);
}

std::string TextOfSize(const WantedSize& size) {
    return HasOwnUnit(size.number) ? size.number : size.number + " " + kSizeUnits[size.unit];
}

bool AskForSize(HWND owner, WantedSize* size) {
    SizeBox box = {{}, size};
    const INT_PTR answer = RunPlainDialog(owner, L"Save within a size", SizeProcedure, &box);
    FreePlainDialog(&box.dialog);
    return answer == IDOK;
}

}  // namespace kfx::stage
