// SPDX-License-Identifier: MIT
#include "window/about.h"

#include <shellapi.h>

#include <cstdio>

#include "host/floating_point_state.h"
#include "resources/resource_ids.h"
#include "window/dialog_services.h"
#include "window/guards.h"
#include "window/logo.h"
#include "window/picture_controls.h"
#include "window/plugin_state.h"
#include "window/push_buttons.h"

namespace kfx {
namespace {

constexpr int kAboutButtons[] = {IDC_ABOUT_CLOSE, IDC_ABOUT_WEB_PAGE, IDC_ABOUT_HELP};

Logo aboutLogo = {};  // runs while the box is open

void OnInitAbout(HWND box, HFONT titleFont) {
    SetDialogFonts(box);
    ReplacePlaceholders(box);
    for (const int button : kAboutButtons) GiveButtonLook(box, button);
    MakePictureControl(box, IDC_ABOUT_LOGO);
    SendDlgItemMessageA(box, IDC_ABOUT_TITLE, WM_SETFONT, reinterpret_cast<WPARAM>(titleFont), FALSE);
    SetDlgItemTextA(box, IDC_ABOUT_TITLE, "Kestrel FX #1 Plugin");
    char text[kTextBuffer + 64];
    std::snprintf(text, sizeof text, "Version %d.%d%c (revision %d)\n\n%s", KFX_VERSION_MAJOR,
                  KFX_VERSION_MINOR, KFX_VERSION_LETTER[0], KFX_REVISION, LoadText(IDS_ABOUT_TEXT));
    SetDlgItemTextA(box, IDC_ABOUT_TEXT, text);
    MakeRoomForText(box, IDC_ABOUT_TEXT);
    StartLogo(&aboutLogo, box, IDC_ABOUT_LOGO);
    CenterOnScreen(box);
}

void OnDrawAboutItem(const DRAWITEMSTRUCT& item) {
    if (item.CtlID == IDC_ABOUT_LOGO)
        DrawLogo(&aboutLogo, item);
    else
        DrawPushButton(item);
}

void OpenWebPage(HWND box) {
    const HINSTANCE answer = ShellExecuteA(box, "open", KFX_WEB_PAGE, nullptr, nullptr, SW_SHOWNORMAL);
    if (reinterpret_cast<INT_PTR>(answer) <= 32) ShowMessage(box, LoadText(IDS_BROWSER_NOT_OPENED));
}

void OnAboutCommand(HWND box, int id) {
    switch (id) {
        case IDC_ABOUT_CLOSE:
        case IDCANCEL:  // Escape and the close box
            EndDialog(box, id);
            break;
        case IDC_ABOUT_HELP:
            ShowHelp(box, "ABOUT");
            break;
        case IDC_ABOUT_WEB_PAGE:
            OpenWebPage(box);
            break;
    }
}

INT_PTR OnColorAboutStatic(HDC dc) {
    SetTextColor(dc, GetSysColor(COLOR_WINDOWTEXT));
    SetBkMode(dc, TRANSPARENT);
    return reinterpret_cast<INT_PTR>(GetStockObject(HOLLOW_BRUSH));
}

INT_PTR CALLBACK AboutProcedure(HWND box, UINT message, WPARAM word, LPARAM data) {
    if (OnLogoTick(&aboutLogo, word)) return TRUE;
    switch (message) {
        case WM_INITDIALOG:
            OnInitAbout(box, reinterpret_cast<HFONT>(data));
            return TRUE;
        case WM_CTLCOLORSTATIC:
            return OnColorAboutStatic(reinterpret_cast<HDC>(word));
        case WM_DRAWITEM:
            OnDrawAboutItem(*reinterpret_cast<const DRAWITEMSTRUCT*>(data));
            return TRUE;
        case WM_COMMAND:
            OnAboutCommand(box, LOWORD(word));
            return TRUE;
        case WM_HELP:
            ShowHelp(box, "ABOUT");
            return TRUE;
        case WM_DESTROY:
            StopLogo(&aboutLogo);
            return TRUE;
    }
    return FALSE;
}

}  // namespace

void ShowAbout(HWND owner) {
    const GdiObject<HFONT> titleFont(MakeFont("Times New Roman", 28, FW_BOLD, FF_ROMAN));
    const HostFloatingPoint turn;
    DialogBoxParamA(plugin.module, MAKEINTRESOURCEA(IDD_ABOUT), owner, AboutProcedure,
                    reinterpret_cast<LPARAM>(titleFont.handle));
}

}  // namespace kfx
