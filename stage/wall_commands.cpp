// SPDX-License-Identifier: MIT
#include "stage/wall_commands.h"

#include <algorithm>
#include <string>
#include <utility>

#include "driven/plugin_controls.h"
#include "stage/child_windows.h"
#include "stage/command_ids.h"
#include "stage/release_later.h"
#include "stage/stage.h"
#include "stage/stage_messages.h"
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
    if (!IsChildShown(window)) return;
    const bool hadFocus = GetFocus() == window || IsChild(window, GetFocus());
    ShowChild(window, false);
    if (hadFocus) FocusPicture(stage);
}

void StartWall(Stage* stage) {
    // The wall stays hidden while the message is on its way: one that could not be posted never comes.
    if (!stage->wall.starts) stage->wall.starts = PostMessageW(stage->window, kWallStarts, 0, 0) != 0;
}

void ShowWall(const Stage& stage) {
    ShowChild(stage.wall.window, true);
    Hide(stage, stage.controls.canvas);
    UpdateWallMoment(stage);
}

// Memory of a step that is gone would count nowhere.
void ForgetGoneFilm(Stage* stage) {
    StageWall& wall = stage->wall;
    const auto& steps = stage->history.steps;
    const auto isShown = [&wall](const Step& step) { return step.film == wall.film; };
    if (!wall.film || std::any_of(steps.begin(), steps.end(), isShown)) return;
    ReleaseLater(std::exchange(wall.film, nullptr));
    StartWall(stage);
}

}  // namespace

void MakeWall(Stage* stage) { stage->wall.window = CreateWall(stage->window, kWall, stage->dpi); }

bool IsWallShown(const Stage& stage) {
    return stage.view.allEffects && stage.wall.window && !stage.history.steps.empty();
}

void UpdateWall(Stage* stage, const RECT& area) {
    StageWall& wall = stage->wall;
    if (!wall.window) return;
    PlaceChild(wall.window, area);
    if (!IsWallShown(*stage)) {
        ShowChild(stage->controls.canvas, true);
        Hide(*stage, wall.window);
        ForgetGoneFilm(stage);
        return;
    }
    const auto& film = stage->history.steps[stage->history.current].film;
    if (wall.film != film) {
        ReleaseLater(std::exchange(wall.film, film));
        StartWall(stage);
    }
    if (!wall.starts) ShowWall(*stage);
}

void OnWallStarts(Stage* stage) {
    StageWall& wall = stage->wall;
    wall.starts = false;
    ShowOnWall(wall.window, wall.film ? WallSourceOf(*wall.film) : nullptr);
    if (IsWallShown(*stage)) ShowWall(*stage);
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
