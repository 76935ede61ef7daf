// SPDX-License-Identifier: MIT
#include "stage/plain_dialog.h"

#include <algorithm>

#include "stage/window_place.h"

namespace kfx::stage {
namespace {

// A template without controls: menu, class and title are empty. The system wants it at a multiple of four.
struct alignas(4) EmptyTemplate {
    DLGTEMPLATE box;
    WORD menu, className, title;
};

HFONT MakeFont(const LOGFONTW& description) { return CreateFontIndirectW(&description); }

struct Start {
    const wchar_t* title;
    DLGPROC procedure;
    void* user;
};

INT_PTR CALLBACK FirstProcedure(HWND window, UINT message, WPARAM word, LPARAM pointer) {
    if (message != WM_INITDIALOG) return FALSE;
    const auto* start = reinterpret_cast<const Start*>(pointer);
    SetWindowTextW(window, start->title);
    SetWindowLongPtrW(window, DWLP_DLGPROC, reinterpret_cast<LONG_PTR>(start->procedure));
    return start->procedure(window, message, word, reinterpret_cast<LPARAM>(start->user));
}

}  // namespace

LOGFONTW MessageFont(int dpi) {
    using Query = BOOL(WINAPI*)(UINT, UINT, PVOID, UINT, UINT);
    NONCLIENTMETRICSW metrics = {};
    metrics.cbSize = sizeof metrics;
    const auto address = reinterpret_cast<void*>(
        GetProcAddress(GetModuleHandleW(L"user32.dll"), "SystemParametersInfoForDpi"));
    if (address && reinterpret_cast<Query>(address)(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0,
                                                    static_cast<UINT>(dpi)))
        return metrics.lfMessageFont;
    SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0);
    return metrics.lfMessageFont;
}

INT_PTR RunPlainDialog(HWND owner, const wchar_t* title, DLGPROC procedure, void* user) {
    EmptyTemplate empty = {};
    empty.box.style = WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME;
    empty.box.cx = empty.box.cy = 100;
    Start start = {title, procedure, user};
    return DialogBoxIndirectParamW(GetModuleHandleW(nullptr), &empty.box, owner, FirstProcedure,
                                   reinterpret_cast<LPARAM>(&start));
}

void TakePlainDialog(PlainDialog* dialog, HWND window) {
    dialog->window = window;
    dialog->dpi = DpiOf(window);
    LOGFONTW font = MessageFont(dialog->dpi);
    dialog->font = MakeFont(font);
    font.lfWeight = FW_BOLD;
    dialog->boldFont = MakeFont(font);
}

void FreePlainDialog(PlainDialog* dialog) {
    if (dialog->font) DeleteObject(dialog->font);
    if (dialog->boldFont) DeleteObject(dialog->boldFont);
    dialog->font = dialog->boldFont = nullptr;
}

HWND AddControl(const PlainDialog& dialog, const PlainControl& control) {
    const auto scaled = [&dialog](LONG value) { return MulDiv(value, dialog.dpi, 96); };
    const RECT& place = control.place;
    const HWND made = CreateWindowExW(
        lstrcmpiW(control.className, L"EDIT") == 0 ? WS_EX_CLIENTEDGE : 0, control.className, control.text,
        WS_CHILD | WS_VISIBLE | control.style, scaled(place.left), scaled(place.top),
        scaled(place.right - place.left), scaled(place.bottom - place.top), dialog.window,
        reinterpret_cast<HMENU>(static_cast<INT_PTR>(control.id)), GetModuleHandleW(nullptr), nullptr);
    SendMessageW(made, WM_SETFONT, reinterpret_cast<WPARAM>(dialog.font), FALSE);
    return made;
}

void SizePlainDialog(const PlainDialog& dialog, SIZE inside) {
    RECT box = {0, 0, MulDiv(inside.cx, dialog.dpi, 96), MulDiv(inside.cy, dialog.dpi, 96)};
    AdjustWindowRectEx(&box, static_cast<DWORD>(GetWindowLongPtrW(dialog.window, GWL_STYLE)), FALSE,
                       static_cast<DWORD>(GetWindowLongPtrW(dialog.window, GWL_EXSTYLE)));
    const LONG width = box.right - box.left, height = box.bottom - box.top;
    RECT owner;
    MONITORINFO screen = {};
    screen.cbSize = sizeof screen;
    const HWND over = GetWindow(dialog.window, GW_OWNER) ? GetWindow(dialog.window, GW_OWNER) : dialog.window;
    GetMonitorInfoW(MonitorFromWindow(over, MONITOR_DEFAULTTONEAREST), &screen);
    const RECT& room = screen.rcWork;
    if (!GetWindowRect(over, &owner)) owner = room;
    const auto between = [](LONG value, LONG least, LONG most) {
        return std::max(std::min(value, most), least);
    };
    const LONG left = between((owner.left + owner.right - width) / 2, room.left, room.right - width);
    const LONG top = between((owner.top + owner.bottom - height) / 2, room.top, room.bottom - height);
    SetWindowPos(dialog.window, nullptr, left, top, width, height, SWP_NOZORDER | SWP_NOACTIVATE);
}

}  // namespace kfx::stage
