// SPDX-License-Identifier: MIT
#include "stage/wall_commands.h"

#include <string>

#include "driven/plugin_controls.h"
#include "stage/command_ids.h"
#include "stage/stage.h"
#include "stage/wall_view.h"

namespace kfx::stage {

using commands::Parameter;
using commands::SettingsDocument;

namespace {

std::shared_ptr<const WallSource> WallSourceOf(const Film& film) {
    auto source = std::make_shared<WallSource>();
    source->width = film.facts.width;
    source->height = film.facts.height;
    for (const FilmFrame& frame : film.frames)
        source->frames.push_back({frame.pixels, frame.facts.transparent, MillisecondsOf(frame.facts)});
    return source;
}

void AddLine(const char* kind, int control, int value, SettingsDocument* document) {
    document->lines.push_back({control, kind + std::to_string(control) + "=" + std::to_string(value)});
}

const char* KindOf(const Parameter& parameter) {
    if (parameter.kind == Parameter::Slider) return "SCROLL";
    return parameter.kind == Parameter::List ? "CMBBOX" : "CHKBOX";
}

// Hides a window that may have the focus.
void Hide(const Stage& stage, HWND window) {
    if (!IsWindowVisible(window)) return;
    const bool hadFocus = GetFocus() == window || IsChild(window, GetFocus());
    ShowWindow(window, SW_HIDE);
    if (hadFocus) FocusPicture(stage);
}

}  // namespace

void MakeWall(Stage* stage) { stage->wall.window = CreateWall(stage->window, kWall, stage->dpi); }

bool IsWallShown(const Stage& stage) {
    return stage.view.allEffects && stage.wall.window && !stage.history.steps.empty();
}

void UpdateWall(Stage* stage, const RECT& area) {
    StageWall& wall = stage->wall;
    if (!wall.window) return;
    SetWindowPos(wall.window, nullptr, area.left, area.top, area.right - area.left, area.bottom - area.top,
                 SWP_NOZORDER | SWP_NOACTIVATE);
    if (!IsWallShown(*stage)) {
        ShowWindow(stage->controls.canvas, SW_SHOWNA);
        Hide(*stage, wall.window);
        return;
    }
    const auto& film = stage->history.steps[stage->history.current].film;
    if (wall.film != film) {
        wall.film = film;
        ShowOnWall(wall.window, WallSourceOf(*film));
    }
    ShowWindow(wall.window, SW_SHOWNA);
    Hide(*stage, stage->controls.canvas);
    UpdateWallMoment(*stage);
}

void UpdateWallMoment(const Stage& stage) {
    if (IsWallShown(stage)) ShowWallAt(stage.wall.window, stage.playback.position);
}

void FocusPicture(const Stage& stage) {
    SetFocus(IsWallShown(stage) ? stage.wall.window : stage.controls.canvas);
}

void OnWallOpens(Stage* stage, const EffectSettings& settings) {
    if (IsWorking(*stage)) {
        ShowStatus(stage, "Open the effect once this is done.");
        return;
    }
    if (IsPluginOpen(*stage)) ShowStatus(stage, "Close the plug-in's window to open another effect.");
    OpenPlugin(stage, DocumentOf(WallEffects(stage->wall.window), settings));
}

SettingsDocument DocumentOf(const std::vector<EffectDescription>& effects, const EffectSettings& settings) {
    SettingsDocument document;
    AddLine("CMBBOX", driven::kEffectList, static_cast<int>(settings.effect), &document);
    const std::vector<Parameter>& parameters = effects[settings.effect].parameters;
    for (size_t i = 0; i < parameters.size(); ++i)
        AddLine(KindOf(parameters[i]), parameters[i].control, settings.values[i] - parameters[i].shownOffset,
                &document);
    return document;
}

}  // namespace kfx::stage
