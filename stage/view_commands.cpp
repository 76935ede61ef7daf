// SPDX-License-Identifier: MIT
#include "stage/view_commands.h"

#include <commdlg.h>

#include "stage/canvas.h"
#include "stage/stage.h"

namespace kfx::stage {

void OnArrangement(Stage* stage, Arrangement arrangement) {
    stage->view.arrangement = arrangement;
    stage->view.allEffects = false;
}

void OnGround(Stage* stage, Ground ground) { stage->view.ground = ground; }

void OnColoredGround(Stage* stage) {
    COLORREF own[16] = {};
    CHOOSECOLORW dialog = {};
    dialog.lStructSize = sizeof dialog;
    dialog.hwndOwner = stage->window;
    dialog.rgbResult = stage->view.groundColor;
    dialog.lpCustColors = own;
    dialog.Flags = CC_RGBINIT | CC_FULLOPEN;
    if (!ChooseColorW(&dialog)) return;
    stage->view.groundColor = dialog.rgbResult;
    stage->view.ground = Ground::Colored;
}

void OnZoomFit(Stage* stage) { stage->view.zoom = kZoomToFit; }

void OnZoomFull(Stage* stage) {
    const Film* film = ShownFilm(stage->history);
    if (!film) return;
    const RECT pane = PanesOf(*stage).result;
    ZoomCanvas(stage, 1 / ScaleOf(stage->view, {film->facts.width, film->facts.height}, pane));
}

void ShowSourceAlone(Stage* stage, bool alone) {
    if (stage->view.sourceAlone == alone) return;
    stage->view.sourceAlone = alone;
    InvalidateCanvas(*stage);
}

}  // namespace kfx::stage
