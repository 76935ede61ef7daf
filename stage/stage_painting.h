// SPDX-License-Identifier: MIT
// Where things stand in Stage's window, and drawing them.
#pragma once

#include <windows.h>

#include "stage/stage_state.h"

namespace kfx::stage {

// Device-independent pixels in the window's resolution.
int Scaled(const StageState& state, int value);

// Makes the fonts anew for the window's resolution and gives them to the buttons.
void MakeFonts(StageState* state);

enum CardSide { kSourceCard, kResultCard };

RECT CardArea(const StageState& state, CardSide side);
RECT StatusArea(const StageState& state);
void PlaceButtons(const StageState& state);

// Answers WM_PAINT.
void PaintStage(const StageState& state);

}  // namespace kfx::stage
