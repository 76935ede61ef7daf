// SPDX-License-Identifier: MIT
// The animated logo: a hovering kestrel, in the plug-in window and in the About box.
#pragma once

#include <windows.h>

namespace kfx {

constexpr UINT_PTR kLogoTimer = 99;

// A running logo; `control` is null while it does not run.
struct Logo {
    HWND control;
    int frame;
    int ticks;  // since the last repaint
};

// Starts the logo in a control of the dialog. The frames stay in the module: nothing is allocated but the
// timer.
void StartLogo(Logo* logo, HWND dialog, int controlId);

// Stops the timer; does nothing when the logo does not run.
void StopLogo(Logo* logo);

// While the logo runs, every message whose word parameter is the timer's number is a tick, whatever the
// message, and true says that it goes no further. The logo is repainted: at each tick, over a remote desktop
// at some of them, and not at all where the user has switched animations off.
bool OnLogoTick(Logo* logo, WPARAM word);

// Draws the current frame and steps to the next.
void DrawLogo(Logo* logo, const DRAWITEMSTRUCT& item);

}  // namespace kfx
