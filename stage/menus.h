// SPDX-License-Identifier: MIT
// Menus, accelerators and the list of keys, made from the table of commands.
#pragma once

#include <windows.h>

#include "stage/stage.h"

namespace kfx::stage {

// The window's menu bar; the window owns it once it is set.
HMENU MakeMenuBar();

// All accelerators; to be destroyed by the caller.
HACCEL MakeAccelerators();

// Brings texts, checks and what is possible up to date in a menu that is about to open.
void UpdateMenu(const Stage& stage, HMENU menu);

// Shows which keys do what.
void ShowKeyList(Stage* stage);

}  // namespace kfx::stage
