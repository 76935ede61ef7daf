// SPDX-License-Identifier: MIT
// How portable code reads the effects' controls. In the product they are in the plug-in's window
// (window/effect_panel.cpp). Where there is no window, each variable is its own control
// (framework/panel_native.cpp).
#pragma once

#include <cstdint>

#include "framework/effect.h"

namespace kfx {

// Clones the effect's panel template into the window and binds its controls. False: the panel could not be
// made.
bool InitializePanel(const Effect& effect, void* window);

// A control's current value: a slider's position clamped into its range, 1 or 0 for a check box, a list's
// index.
int32_t ReadControl(const EffectControl& control, void* window);

// Whether the window with the controls is still there. The host may close it inside any request: ask after
// each, before anything of the window is used again.
bool IsPanelOpen(const void* window);

// Whether the user has switched the local background on; `*color` (0x00BBGGRR) is then set.
bool LocalBackgroundChosen(uint32_t* color);

}  // namespace kfx
