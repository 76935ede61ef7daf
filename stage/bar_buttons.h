// SPDX-License-Identifier: MIT
// The buttons of both bars, which Stage draws itself.
#pragma once

#include <windows.h>

namespace kfx::stage {

struct Stage;

// Makes them; their text, which screen readers read, is that of their command.
void MakeBarButtons(Stage* stage);

// Measures their texts; after the font has changed.
void MeasureBarButtons(Stage* stage);

// Puts them into the bars. `left` and `right` are what is left of the lower bar between its buttons.
void PlaceBarButtons(const Stage& stage, const RECT& upper, const RECT& lower, int* left, int* right);

// How wide both bars must be for their buttons, those that are seldom shown included. `between` is what
// stands between the buttons of the lower one.
int LeastBarWidth(const Stage& stage, int between);

// Brings texts, tooltips and what is possible up to date, and shows those that have something to do.
void UpdateBarButtons(Stage* stage);

// Answers WM_DRAWITEM. False: it is none of these.
bool DrawBarButton(const Stage& stage, const DRAWITEMSTRUCT& item);

}  // namespace kfx::stage
