// SPDX-License-Identifier: MIT
// The plug-in's three looks of push buttons. A button with a look is owner-drawn and still behaves like any
// other: Enter presses the one with the focus, and only one at a time is drawn as the default.
#pragma once

#include <windows.h>

namespace kfx {

// Gives the dialog's button the button font and, unless the host wants ordinary system buttons, the look that
// it asks for. A missing button is passed over.
void GiveButtonLook(HWND dialog, int id);

// Draws a button that GiveButtonLook has converted; FALSE for any other control.
BOOL DrawPushButton(const DRAWITEMSTRUCT& item);

}  // namespace kfx
