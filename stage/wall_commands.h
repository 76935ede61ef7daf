// SPDX-License-Identifier: MIT
// The wall in the main window: it stands in the canvas's place and shows the current step under every effect.
#pragma once

#include <memory>

#include <windows.h>

#include "commands/settings_file.h"
#include "stage/film.h"
#include "stage/wall_settings.h"

namespace kfx::stage {

struct Stage;

struct StageWall {
    HWND window = nullptr;             // null: it could not be made, and there is none
    std::shared_ptr<const Film> film;  // that it shows, or null
    bool starts = false;               // kWallStarts is on its way
};

void MakeWall(Stage* stage);

// Whether it is seen in place of the canvas.
bool IsWallShown(const Stage& stage);

// After the arrangement, the step or the area has changed: shows the wall or the canvas, and on the wall what
// the next effect will be applied to.
void UpdateWall(Stage* stage, const RECT& area);

// Answers kWallStarts. To open an animation, to begin with its pictures and to show the wall would together
// take longer than one message may.
void OnWallStarts(Stage* stage);

// The same moment of the animation as on the canvas.
void UpdateWallMoment(const Stage& stage);

// Gives the keys to the wall or the canvas, whichever is shown.
void FocusPicture(const Stage& stage);

// A tile has been opened: the plug-in's window opens with its effect and settings.
void OnWallOpens(Stage* stage, const EffectSettings& settings);

// The settings as lines of a settings document, for all controls of the effect's panel.
commands::SettingsDocument DocumentOf(const std::vector<EffectDescription>& effects,
                                      const EffectSettings& settings);

}  // namespace kfx::stage
