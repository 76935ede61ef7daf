// SPDX-License-Identifier: MIT
// The kinds of bound controls: each kind is one procedure that subclasses the control, knows how to store the
// control's state in the variable it is tied to, and writes and applies the control's line of a settings
// document. Windows are passed as void*, so that headers stay free of Windows; an HWND converts by itself.
#pragma once

#include <cstdint>

namespace kfx {

enum class BoundKind {
    None,
    ColorButton,      // text: the colour as an unsigned number; variable uint32_t, 0x00BBGGRR
    Number,           // edit with a range in the control id + 10000; variable int32_t
    NumberText,       // the same, kept as text; variable char[kTextBytes]
    CompanionNumber,  // edit whose variable is tied to the control id - 10000; takes no part in documents
    CheckBox,         // variable int32_t
    TextField,        // variable char[kTextBytes]
    List,             // drop-down list; a changed row while it is closed is told as a close-up; int32_t
    ListBox,          // variable int32_t
    Slider,           // scroll bar with its value label at id + 1; variable int32_t
    TrackBar,         // variable int32_t
    FontBox,          // drop-down list of font names; variable char[kTextBytes]
};

constexpr unsigned kMessageWriteLine = 1334;  // LPARAM: the open FILE; answer 0
constexpr unsigned kMessageApplyLine = 1335;  // LPARAM: the line; answer 1 when it was the control's own

// Subclasses the control with its kind's procedure and ties it to the variable (which may be null and must
// outlive the window). The control's state is not set, except that a colour button's text becomes its colour.
void BindControl(void* control, BoundKind kind, void* variable);

// The kind that BindControl gave the control; None for any other window.
BoundKind KindOf(void* control);

// The variable that the control is tied to, or null.
void* VariableOf(void* control);

// Copies the control's state into its variable. A number is clamped into its range, a check box gives 1 only
// when it is checked and not grey. Does nothing without a variable and for colour buttons, which change by
// SetColorButton.
void StoreControl(void* control);

// Gives a colour button (bound) a new colour: its text, its variable and its swatch.
void SetColorButton(void* control, uint32_t color);

// Shows a position in a slider's value label (id + 1), without moving the slider.
void ShowSliderPosition(void* slider, int32_t position);

}  // namespace kfx
