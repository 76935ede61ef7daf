// SPDX-License-Identifier: MIT
// The list of effects and the panel of the current one.
#pragma once

#include <windows.h>

#include <cstdint>

#include "framework/effect_operations.h"

namespace kfx {

enum class EffectEvent : uint32_t {
    Leaving = 1,  // another effect becomes current, or the window goes
    Entered = 2,  // the effect has just become current
    Changed = 3,  // a parameter or the source has changed
};

// Fills the list from the effect table, makes every effect's panel, selects MainEffect. False: a panel could
// not be made.
bool FillEffectList(HWND window);

// Shows the selected effect's panel and the preview.
void ShowCurrentPanel(HWND window);

// The row for preview and build: the list's selection, even while the list is open and MainEffect still has
// the row of before. Null: none.
const EffectDescriptor* EffectInUse(HWND window);

// The user has chosen in the list: switches panel, MainEffect and preview when the effect is another one.
void OnEffectChoice(HWND window);

// Tells the effect whose row is MainEffect.
void NotifyCurrentEffect(HWND window, EffectEvent event);

}  // namespace kfx
