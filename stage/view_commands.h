// SPDX-License-Identifier: MIT
// The commands of the view.
#pragma once

#include "stage/view.h"

namespace kfx::stage {

struct Stage;

void OnArrangement(Stage* stage, Arrangement arrangement);
void OnGround(Stage* stage, Ground ground);
void OnColoredGround(Stage* stage);
void OnZoomFit(Stage* stage);
void OnZoomFull(Stage* stage);

// While its key is held, the source stands alone.
void ShowSourceAlone(Stage* stage, bool alone);

}  // namespace kfx::stage
