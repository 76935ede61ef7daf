// SPDX-License-Identifier: MIT
#include "stage/play_commands.h"

#include <algorithm>

#include "stage/canvas.h"
#include "stage/stage.h"

namespace kfx::stage {

namespace {

size_t FrameCount(const Stage& stage) {
    const Film* film = ShownFilm(stage.history);
    return film ? film->frames.size() : 0;
}

void ChangeSpeedBy(Stage* stage, int rows) {
    const Film* film = ShownFilm(stage->history);
    if (!film) return;
    ChangeSpeed(&stage->playback, rows, GetTickCount64(), *film);
    SetPlayTimer(stage);
}

}  // namespace

bool HasFrames(const Stage& stage) { return FrameCount(stage) > 1; }

bool CanStepBack(const Stage& stage) {
    return HasFrames(stage) && (stage.playback.playing || stage.playback.frame > 0);
}

bool CanStepOn(const Stage& stage) {
    return HasFrames(stage) && (stage.playback.playing || stage.playback.frame + 1 < FrameCount(stage));
}

void OnPlay(Stage* stage) {
    const Film* film = ShownFilm(stage->history);
    if (!film) return;
    Advance(&stage->playback, *film, GetTickCount64());
    SetPlaying(&stage->playback, *film, !stage->playback.playing, GetTickCount64());
    SetPlayTimer(stage);
}

void GoToFrame(Stage* stage, size_t frame) {
    const Film* film = ShownFilm(stage->history);
    if (!film) return;
    ShowFrame(&stage->playback, *film, frame);
    SetPlayTimer(stage);
}

void OnFirstFrame(Stage* stage) { GoToFrame(stage, 0); }

// While it plays, stepping stops it at the neighbour of the frame that is shown.
void OnPreviousFrame(Stage* stage) {
    GoToFrame(stage, stage->playback.frame > 0 ? stage->playback.frame - 1 : 0);
}

void OnNextFrame(Stage* stage) {
    GoToFrame(stage, std::min(stage->playback.frame + 1, FrameCount(*stage) - 1));
}

void OnLastFrame(Stage* stage) { GoToFrame(stage, FrameCount(*stage) - 1); }

void OnSlower(Stage* stage) { ChangeSpeedBy(stage, -1); }

void OnFaster(Stage* stage) { ChangeSpeedBy(stage, 1); }

void OnUsualSpeed(Stage* stage) { ChangeSpeedBy(stage, kUsualSpeedRow - stage->playback.speed); }

void OnLoopForever(Stage* stage) { stage->playback.forever = !stage->playback.forever; }

void OnPlayTimer(Stage* stage) {
    const Film* film = ShownFilm(stage->history);
    if (!film) return;
    const bool changed = Advance(&stage->playback, *film, GetTickCount64());
    if (!stage->playback.playing) {
        UpdateControls(stage);
    } else if (changed) {
        InvalidateCanvas(*stage);
        UpdatePosition(*stage);
    }
    SetPlayTimer(stage);
}

void SetPlayTimer(Stage* stage) {
    const Film* film = ShownFilm(stage->history);
    if (!film || !stage->playback.playing || film->frames.size() < 2) {
        KillTimer(stage->window, kPlayTimer);
        return;
    }
    const auto wait = static_cast<UINT>(std::min<uint64_t>(UntilNextFrame(stage->playback, *film), 60000));
    SetTimer(stage->window, kPlayTimer, wait, nullptr);
}

void ShowFilmAnew(Stage* stage, PlayFrom from) {
    const Film* film = ShownFilm(stage->history);
    if (from == PlayFrom::Start) {
        stage->playback.playing = true;
        Restart(&stage->playback, GetTickCount64());
    } else if (film) {
        stage->playback.position = std::min(stage->playback.position, LengthOf(*film));
        stage->playback.frame = FrameAt(*film, stage->playback.position);
    }
    UpdateControls(stage);
    SetPlayTimer(stage);
}

}  // namespace kfx::stage
