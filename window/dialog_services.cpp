// SPDX-License-Identifier: MIT
#include "window/dialog_services.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "host/floating_point_state.h"
#include "host/host_requests.h"
#include "resources/resource_ids.h"
#include "window/guards.h"
#include "window/plugin_state.h"
#include "window/push_buttons.h"

namespace kfx {
namespace {

// The buttons of all three templates; each has some of them.
constexpr int kMessageButtons[] = {IDC_MESSAGE_OK, IDC_MESSAGE_CANCEL, IDC_MESSAGE_YES, IDC_MESSAGE_NO};

// To focus a missing button would take the focus from the one that has it.
void FocusIfPresent(HWND box, int button) {
    if (const HWND control = GetDlgItem(box, button)) SetFocus(control);
}

void OnInitMessageBox(HWND box, const char* text) {
    SetDialogFonts(box);
    ReplacePlaceholders(box);
    SetDlgItemTextA(box, IDC_MESSAGE_TEXT, text);
    for (const int button : kMessageButtons) GiveButtonLook(box, button);
    MakeRoomForText(box, IDC_MESSAGE_TEXT);
    FocusIfPresent(box, IDC_MESSAGE_OK);
    FocusIfPresent(box, IDC_MESSAGE_YES);
    CenterOnScreen(box);
}

INT_PTR CALLBACK MessageBoxProcedure(HWND box, UINT message, WPARAM word, LPARAM data) {
    switch (message) {
        case WM_INITDIALOG:
            OnInitMessageBox(box, reinterpret_cast<const char*>(data));
            return FALSE;
        case WM_DRAWITEM:
            return DrawPushButton(*reinterpret_cast<const DRAWITEMSTRUCT*>(data));
        case WM_COMMAND:
            for (const int button : kMessageButtons) {
                if (LOWORD(word) == button) EndDialog(box, button);
            }
            return TRUE;
    }
    return FALSE;
}

// 0, which is no button's id: the owner has been destroyed meanwhile.
int RunMessageBox(HWND owner, const char* boxTemplate, const char* text) {
    if (owner && !IsWindow(owner)) return 0;
    const HostFloatingPoint turn;  // the host's windows get their messages meanwhile
    const INT_PTR answer = DialogBoxParamA(plugin.module, boxTemplate, owner, MessageBoxProcedure,
                                           reinterpret_cast<LPARAM>(text));
    Repaint(owner);
    return static_cast<int>(answer);
}

BOOL CALLBACK ReplacePlaceholder(HWND control, LPARAM) {
    constexpr char kMarker[] = "~!!~";
    char className[16] = "";
    GetClassNameA(control, className, sizeof className);
    if (lstrcmpiA(className, "static") != 0 && lstrcmpiA(className, "button") != 0) return TRUE;
    char text[kTextBuffer] = "";
    GetWindowTextA(control, text, sizeof text);
    const char* marker = std::strstr(text, kMarker);
    const int id = marker ? std::atoi(marker + sizeof kMarker - 1) : 0;
    char entry[8192];
    if (id >= 1 && LoadStringA(plugin.module, static_cast<UINT>(id), entry, sizeof entry) >= 2) {
        SetWindowTextA(control, entry);
    }
    return TRUE;
}

// The height that the text of a static control takes when its lines are as wide as the control; 0: unknown.
int HeightOfText(HWND control, int width) {
    char text[2 * kTextBuffer] = "";
    GetWindowTextA(control, text, sizeof text);
    const HDC dc = GetDC(control);
    if (!dc) return 0;
    RECT lines = {0, 0, width, 0};
    {
        const SavedContext saved(dc);
        SelectObject(dc, reinterpret_cast<HFONT>(SendMessageA(control, WM_GETFONT, 0, 0)));
        DrawTextA(dc, text, -1, &lines, DT_CALCRECT | DT_WORDBREAK | DT_EXPANDTABS | DT_NOPREFIX);
    }
    ReleaseDC(control, dc);
    return lines.bottom;
}

// Moves everything that begins at `from` or below, in the dialog's coordinates.
void MoveControlsBelow(HWND dialog, int from, int by) {
    for (HWND child = GetWindow(dialog, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
        RECT place;
        if (!GetWindowRect(child, &place)) continue;
        MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT*>(&place), 2);
        if (place.top >= from)
            SetWindowPos(child, nullptr, place.left, place.top + by, 0, 0,
                         SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
    }
}

void MakeHigher(HWND window, const RECT& size, int by) {
    SetWindowPos(window, nullptr, 0, 0, size.right - size.left, size.bottom - size.top + by,
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

BOOL CALLBACK SetTextFont(HWND control, LPARAM) {
    SendMessageA(control, WM_SETFONT, reinterpret_cast<WPARAM>(plugin.textFont), FALSE);
    return TRUE;
}

}  // namespace

int ShowMessage(HWND owner, const char* text) { return RunMessageBox(owner, "MessageBox", text); }

int AskYesNo(HWND owner, const char* text) { return RunMessageBox(owner, "YESNOBOX", text); }

int AskYesNoCancel(HWND owner, const char* text) { return RunMessageBox(owner, "YESNOCANCELBOX", text); }

const char* LoadText(UINT id) {
    static char buffer[kTextBuffer];
    if (LoadStringA(plugin.module, id, buffer, sizeof buffer) == 0) {
        std::strcpy(buffer, "String table error - this application may be damaged");
    }
    return buffer;
}

void ReplacePlaceholders(HWND dialog) { EnumChildWindows(dialog, ReplacePlaceholder, 0); }

HFONT MakeFont(const char* face, int height, int weight, DWORD family) {
    return CreateFontA(height, 0, 0, 0, weight, FALSE, FALSE, FALSE, DEFAULT_CHARSET, OUT_DEFAULT_PRECIS,
                       CLIP_DEFAULT_PRECIS, DEFAULT_QUALITY, DEFAULT_PITCH | family, face);
}

void SetDialogFonts(HWND dialog) {
    if (plugin.textFont) EnumChildWindows(dialog, SetTextFont, 0);
}

void MakeRoomForText(HWND dialog, int text) {
    const HWND control = GetDlgItem(dialog, text);
    RECT place, box;
    if (!control || !GetWindowRect(control, &place) || !GetWindowRect(dialog, &box)) return;
    const int missing =
        HeightOfText(control, place.right - place.left) - static_cast<int>(place.bottom - place.top);
    if (missing <= 0) return;
    RECT inside = place;
    MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT*>(&inside), 2);
    MoveControlsBelow(dialog, inside.bottom, missing);
    MakeHigher(control, place, missing);
    MakeHigher(dialog, box, missing);
}

void MoveFocus(HWND dialog, int control) {
    SendMessageA(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(GetDlgItem(dialog, control)), TRUE);
}

void FillList(HWND list, const char* items) {
    SendMessageA(list, CB_RESETCONTENT, 0, 0);
    while (*items) {
        const size_t length = std::strcspn(items, ";");
        char item[kTextBytes];
        std::snprintf(item, sizeof item, "%.*s", static_cast<int>(length), items);
        if (length > 0) SendMessageA(list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(item));
        items += length + (items[length] == ';');
    }
    SendMessageA(list, CB_SHOWDROPDOWN, FALSE, 0);
}

void CenterOnScreen(HWND window) {
    RECT place;
    if (!GetWindowRect(window, &place)) return;
    const int x = (GetSystemMetrics(SM_CXSCREEN) - (place.right - place.left)) / 2;
    const int y = (GetSystemMetrics(SM_CYSCREEN) - (place.bottom - place.top)) / 2;
    SetWindowPos(window, nullptr, x, y, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void Repaint(HWND window) {
    if (!window) return;
    const HostFloatingPoint turn;  // it may be the host's
    RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN | RDW_UPDATENOW);
}

void ShowHelp(HWND owner, const char* topic) {
    char reference[kTextBytes];
    std::snprintf(reference, sizeof reference, topic ? "KFXPLUG1.HTML#%s" : "KFXPLUG1.HTML", topic);
    if (!RequestShowHelp(plugin.host, reference)) ShowMessage(owner, LoadText(IDS_HELP_NOT_SHOWN));
}

}  // namespace kfx
