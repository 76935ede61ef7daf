// SPDX-License-Identifier: MIT
// Dialog boxes whose controls are made by code, in device-independent pixels and with the user's font.
#pragma once

#include <windows.h>

namespace kfx::stage {

// The user's font for texts in windows, at a resolution in pixels per inch.
LOGFONTW MessageFont(int dpi);

struct PlainDialog {
    HWND window = nullptr;
    int dpi = 96;
    HFONT font = nullptr;
    HFONT boldFont = nullptr;
};

struct PlainControl {
    const wchar_t* className;
    const wchar_t* text;
    DWORD style;  // beside WS_CHILD and WS_VISIBLE
    int id;
    RECT place;  // device-independent pixels
};

// Shows a box over its owner until EndDialog, whose result is returned; -1: it could not be shown. The
// procedure gets `user` with WM_INITDIALOG. Dialog keys work in it.
INT_PTR RunPlainDialog(HWND owner, const wchar_t* title, DLGPROC procedure, void* user);

// For WM_INITDIALOG: takes the window and makes its fonts, which FreePlainDialog gives back.
void TakePlainDialog(PlainDialog* dialog, HWND window);
void FreePlainDialog(PlainDialog* dialog);

HWND AddControl(const PlainDialog& dialog, const PlainControl& control);

// Gives the box this room inside (device-independent pixels), in the middle of its owner and on its screen.
void SizePlainDialog(const PlainDialog& dialog, SIZE inside);

}  // namespace kfx::stage
