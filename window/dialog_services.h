// SPDX-License-Identifier: MIT
// Small services that every dialog of the plug-in uses: its own message boxes, texts, lists, centring, help.
#pragma once

#include <windows.h>

namespace kfx {

constexpr int kTextBuffer = 1024;  // LoadText's

// Shows a message in the plug-in's own box, modal to `owner`, and repaints the owner afterwards. The answer
// is the button's id: IDOK from ShowMessage; IDYES, IDNO or IDCANCEL from the others. 0: the owner has been
// destroyed, and nothing was shown.
int ShowMessage(HWND owner, const char* text);
int AskYesNo(HWND owner, const char* text);
int AskYesNoCancel(HWND owner, const char* text);

// The string-table entry, in a shared buffer that the next call overwrites. A missing entry gives a text that
// says so.
const char* LoadText(UINT id);

// Replaces the texts "~!!~n" of the dialog's statics and buttons by string-table entry n.
void ReplacePlaceholders(HWND dialog);

// A new font of the face, `height` pixels high. FF_ROMAN or FF_SWISS helps a system without the face to one
// like it.
HFONT MakeFont(const char* face, int height, int weight = FW_DONTCARE, DWORD family = FF_DONTCARE);

// Gives every control of the dialog the plug-in's text font, when there is one.
void SetDialogFonts(HWND dialog);

// Makes a dialog as much higher as the static text in it needs to show its last line. What stands below the
// text moves down. A text that fits changes nothing.
void MakeRoomForText(HWND dialog, int text);

// Gives the control the focus as the Tab key would: a push button becomes what Enter presses, too.
void MoveFocus(HWND dialog, int control);

// Fills a drop-down list with the pieces of a text separated by ";". Empty pieces add nothing.
void FillList(HWND list, const char* items);

// Centres the window on the primary screen; its size stays.
void CenterOnScreen(HWND window);

// Redraws the window and everything in it at once; null is allowed.
void Repaint(HWND window);

// Asks the host to show the help document at `topic` (null: at its start); says so when it cannot.
void ShowHelp(HWND owner, const char* topic);

}  // namespace kfx
