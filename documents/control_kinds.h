// SPDX-License-Identifier: MIT
// The kinds of bound controls. A bound control is tied to a variable and gets a window procedure of its kind,
// which writes and applies the control's line of a settings document. A kind also says which notifications of
// the control mean that the user has changed it, and how the preview follows such a change.
#pragma once

#include <windows.h>

#include <cstdint>

namespace kfx {

enum class BoundKind {
    None,
    ColorButton,      // text: the colour as an unsigned number; variable uint32_t, 0x00BBGGRR
    Number,           // edit with a range in the control id + 10000; variable int32_t
    NumberText,       // the same, kept as text; variable char[kTextBytes]
    CompanionNumber,  // edit whose variable is tied to the control id - 10000; not saved in documents
    CheckBox,         // variable int32_t
    TextField,        // variable char[kTextBytes]
    List,             // drop-down list; see OnControlNotification for a closed one; variable int32_t
    ListBox,          // variable int32_t
    Slider,           // scroll bar with its value label at id + 1; variable int32_t
    TrackBar,         // variable int32_t
    FontBox,          // drop-down list of font names; variable char[kTextBytes]
};

constexpr UINT kMessageWriteLine = 1334;  // LPARAM: the open FILE; answer 0
constexpr UINT kMessageApplyLine = 1335;  // LPARAM: the line; answer 1 when it was the control's own

// Gives the control the procedure of the kind and ties it to the variable (which may be null and must outlive
// the window). The control's state is not set, except that a colour button's text becomes its colour.
void BindControl(HWND control, BoundKind kind, void* variable);

// The kind that BindControl gave the control; None for any other window.
BoundKind KindOf(HWND control);

// The variable that the control is tied to, or null.
void* VariableOf(HWND control);

// Copies the control's state into its variable. A number is clamped into its range, a check box gives 1 only
// when it is checked and not grey. Does nothing without a variable and for colour buttons, which change by
// SetColorButton.
void StoreControl(HWND control);

// Gives a colour button (bound) a new colour: its text, its variable and its swatch.
void SetColorButton(HWND control, uint32_t color);

// Shows a position in a slider's value label (id + 1), without moving the slider.
void ShowSliderPosition(HWND slider, int32_t position);

// How the preview follows a change.
enum class Follow {
    None,        // nothing has changed
    AfterPause,  // it is repainted when the user pauses
    AtOnce,
};

// Lets the user choose a colour (0x00BBGGRR), starting from `*color`. False: none was chosen, or the window
// has closed meanwhile.
using ChooseColorFunction = bool (*)(uint32_t* color);

// Takes a notification of a bound control: where it means a change, the control's state is stored, and a
// slider or track bar shows it in its label. A colour button gets the colour that `chooseColor` gives. The
// window may have closed when this returns. A closed drop-down list whose row is changed by a key or the
// wheel sends the notification of a list that closes, CBN_CLOSEUP.
Follow OnControlNotification(HWND control, int notification, ChooseColorFunction chooseColor);

}  // namespace kfx
