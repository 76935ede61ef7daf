// SPDX-License-Identifier: MIT
#include "stage/color_box.h"

#include <algorithm>
#include <cstdio>

#include <commdlg.h>

#include "commands/text_windows.h"
#include "stage/plain_dialog.h"

namespace kfx::stage {

using namespace commands;

namespace {

constexpr wchar_t kSwatchesClass[] = L"KestrelSwatches";
constexpr int kColumns = 16, kRows = 16;
// Device-independent pixels.
constexpr int kMargin = 14, kSwatch = 22, kSide = kColumns * kSwatch, kTextHeight = 20, kButtonHeight = 26;

struct ColorBox {
    PlainDialog dialog;
    const uint8_t* palette = nullptr;
    uint32_t color = 0;  // that is chosen
    size_t row = 0;      // of the palette, that has the focus
};

uint32_t ColorAt(const uint8_t* palette, size_t row) {
    const uint8_t* const triple = palette + 3 * row;
    return RGB(triple[0], triple[1], triple[2]);
}

RECT SwatchArea(const RECT& all, size_t row) {
    const int column = static_cast<int>(row) % kColumns, line = static_cast<int>(row) / kColumns;
    return {all.right * column / kColumns, all.bottom * line / kRows, all.right * (column + 1) / kColumns,
            all.bottom * (line + 1) / kRows};
}

// The colour's words are the control's text, which screen readers say.
void GoTo(ColorBox* box, size_t row) {
    box->row = row;
    box->color = ColorAt(box->palette, row);
    const std::wstring text = Widen(ColorText(box->palette, row));
    const HWND swatches = GetDlgItem(box->dialog.window, kSwatches);
    SetWindowTextW(swatches, text.c_str());
    SetDlgItemTextW(box->dialog.window, kColorText, text.c_str());
    NotifyWinEvent(EVENT_OBJECT_NAMECHANGE, swatches, OBJID_CLIENT, CHILDID_SELF);
    InvalidateRect(swatches, nullptr, FALSE);
}

void PaintSwatches(const ColorBox& box, HWND window) {
    PAINTSTRUCT paint;
    const HDC target = BeginPaint(window, &paint);
    RECT all;
    GetClientRect(window, &all);
    for (size_t row = 0; row < kOfferedColors; ++row) {
        const RECT area = SwatchArea(all, row);
        const HBRUSH brush = CreateSolidBrush(ColorAt(box.palette, row));
        FillRect(target, &area, brush);
        DeleteObject(brush);
    }
    // Light colours end where the box begins.
    FrameRect(target, &all, GetSysColorBrush(COLOR_BTNSHADOW));
    // Two frames, one of which is seen on any colour.
    RECT focus = SwatchArea(all, box.row);
    FrameRect(target, &focus, static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH)));
    InflateRect(&focus, -1, -1);
    FrameRect(target, &focus, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH)));
    if (GetFocus() == window) {
        InflateRect(&focus, -1, -1);
        FrameRect(target, &focus, static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH)));
    }
    EndPaint(window, &paint);
}

size_t RowAfterKey(size_t row, WPARAM key) {
    constexpr size_t kLast = kOfferedColors - 1;
    switch (key) {
        case VK_LEFT:
            return row > 0 ? row - 1 : row;
        case VK_RIGHT:
            return std::min(row + 1, kLast);
        case VK_UP:
            return row >= kColumns ? row - kColumns : row;
        case VK_DOWN:
            return row + kColumns <= kLast ? row + kColumns : row;
        case VK_HOME:
            return 0;
        case VK_END:
            return kLast;
    }
    return row;
}

void OnSwatchPressed(ColorBox* box, HWND window, int x, int y) {
    RECT all;
    GetClientRect(window, &all);
    const int column = std::clamp(x * kColumns / std::max<int>(all.right, 1), 0, kColumns - 1);
    const int line = std::clamp(y * kRows / std::max<int>(all.bottom, 1), 0, kRows - 1);
    SetFocus(window);
    GoTo(box, static_cast<size_t>(line * kColumns + column));
}

LRESULT CALLBACK SwatchesProcedure(HWND window, UINT message, WPARAM word, LPARAM pointer) {
    auto* box = reinterpret_cast<ColorBox*>(GetWindowLongPtrW(GetParent(window), DWLP_USER));
    if (!box) return DefWindowProcW(window, message, word, pointer);
    switch (message) {
        case WM_PAINT:
            PaintSwatches(*box, window);
            return 0;
        case WM_GETDLGCODE:
            return DLGC_WANTARROWS;
        case WM_KEYDOWN:
            if (const size_t row = RowAfterKey(box->row, word); row != box->row) GoTo(box, row);
            return 0;
        case WM_LBUTTONDOWN:
            OnSwatchPressed(box, window, static_cast<short>(LOWORD(pointer)),
                            static_cast<short>(HIWORD(pointer)));
            return 0;
        case WM_LBUTTONDBLCLK:
            SendMessageW(box->dialog.window, WM_COMMAND, IDOK, 0);
            return 0;
        case WM_SETFOCUS:
        case WM_KILLFOCUS:
            InvalidateRect(window, nullptr, FALSE);
            return 0;
    }
    return DefWindowProcW(window, message, word, pointer);
}

void OnInit(ColorBox* box, HWND window) {
    WNDCLASSW swatches = {};
    swatches.style = CS_DBLCLKS;
    swatches.lpfnWndProc = SwatchesProcedure;
    swatches.hInstance = GetModuleHandleW(nullptr);
    swatches.hCursor = LoadCursorA(nullptr, IDC_ARROW);
    swatches.lpszClassName = kSwatchesClass;
    RegisterClassW(&swatches);
    TakePlainDialog(&box->dialog, window);
    const LONG right = kMargin + kSide, text = kMargin + kSide + 8, buttons = text + kTextHeight + 8;
    const PlainControl controls[] = {
        {kSwatchesClass, L"", WS_TABSTOP, kSwatches, {kMargin, kMargin, right, kMargin + kSide}},
        {L"STATIC", L"", SS_NOPREFIX, kColorText, {kMargin, text, right, text + kTextHeight}},
        {L"BUTTON",
         L"O&ther colour...",
         WS_TABSTOP,
         kOtherColor,
         {kMargin, buttons, kMargin + 124, buttons + kButtonHeight}},
        {L"BUTTON",
         L"OK",
         WS_TABSTOP | BS_DEFPUSHBUTTON,
         IDOK,
         {right - 172, buttons, right - 90, buttons + kButtonHeight}},
        {L"BUTTON", L"Cancel", WS_TABSTOP, IDCANCEL, {right - 82, buttons, right, buttons + kButtonHeight}},
    };
    for (const PlainControl& control : controls) AddControl(box->dialog, control);
    SizePlainDialog(box->dialog, {right + kMargin, buttons + kButtonHeight + kMargin});
    const uint32_t before = box->color;
    GoTo(box, NearestColor(box->palette, before));
    box->color = before;  // until another one is pointed at
    SetFocus(GetDlgItem(window, kSwatches));
}

void OnOtherColor(ColorBox* box) {
    static COLORREF kept[16] = {};  // the user's own, until Stage is closed
    CHOOSECOLORW dialog = {};
    dialog.lStructSize = sizeof dialog;
    dialog.hwndOwner = box->dialog.window;
    dialog.rgbResult = box->color & 0xFFFFFF;
    dialog.lpCustColors = kept;
    dialog.Flags = CC_RGBINIT | CC_FULLOPEN;
    if (!ChooseColorW(&dialog)) return;
    box->color = dialog.rgbResult;
    EndDialog(box->dialog.window, IDOK);
}

INT_PTR CALLBACK ColorProcedure(HWND window, UINT message, WPARAM word, LPARAM pointer) {
    if (message == WM_INITDIALOG) {
        SetWindowLongPtrW(window, DWLP_USER, pointer);
        OnInit(reinterpret_cast<ColorBox*>(pointer), window);
        return FALSE;  // the focus stands already
    }
    auto* box = reinterpret_cast<ColorBox*>(GetWindowLongPtrW(window, DWLP_USER));
    if (message != WM_COMMAND || !box) return FALSE;
    if (LOWORD(word) == IDOK || LOWORD(word) == IDCANCEL) EndDialog(window, LOWORD(word));
    if (LOWORD(word) == kOtherColor) OnOtherColor(box);
    return TRUE;
}

}  // namespace

bool ChooseColorFrom(HWND owner, const uint8_t* palette, uint32_t* color) {
    ColorBox box;
    box.palette = palette;
    box.color = *color & 0xFFFFFF;
    const INT_PTR answer = RunPlainDialog(owner, L"Choose a colour", ColorProcedure, &box);
    FreePlainDialog(&box.dialog);
    if (answer == IDOK) *color = box.color;
    return answer == IDOK;
}

size_t NearestColor(const uint8_t* palette, uint32_t color) {
    const int wanted[] = {GetRValue(color), GetGValue(color), GetBValue(color)};
    size_t nearest = 0;
    int least = 3 * 256 * 256;
    for (size_t row = 0; row < kOfferedColors; ++row) {
        int distance = 0;
        for (size_t part = 0; part < 3; ++part) {
            const int difference = palette[3 * row + part] - wanted[part];
            distance += difference * difference;
        }
        if (distance >= least) continue;
        least = distance;
        nearest = row;
    }
    return nearest;
}

std::string ColorText(const uint8_t* palette, size_t row) {
    const uint8_t* const triple = palette + 3 * row;
    char text[120];
    std::snprintf(text, sizeof text, "Colour %u of %u: red %d, green %d, blue %d (#%02X%02X%02X)",
                  static_cast<unsigned>(row + 1), static_cast<unsigned>(kOfferedColors), triple[0], triple[1],
                  triple[2], triple[0], triple[1], triple[2]);
    return text;
}

}  // namespace kfx::stage
