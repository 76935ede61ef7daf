// SPDX-License-Identifier: MIT
// What Stage's window holds while it is open, topic by topic. There is one window; its procedure reaches this
// through the window's user data. Only the window's thread touches it.
#pragma once

#include <string>

#include <windows.h>

#include "stage/controls.h"
#include "stage/document.h"
#include "stage/history.h"
#include "stage/playback.h"
#include "stage/plugin_host.h"
#include "stage/remembered.h"
#include "stage/view.h"
#include "stage/wall_commands.h"
#include "stage/work.h"

namespace kfx::stage {

inline constexpr wchar_t kStageTitle[] = L"Kestrel Stage";

struct Stage {
    HWND window = nullptr;
    HACCEL accelerators = nullptr;
    int dpi = 96;
    Controls controls;
    Document document;
    Playback playback;
    View view;
    StageWall wall;
    History history;
    PluginHost plugin;
    Work work;
    Remembered remembered;
};

// Device-independent pixels in the window's resolution.
inline int Scaled(const Stage& stage, int value) { return MulDiv(value, stage.dpi, 96); }

// The record that belongs to the main window or one of its children.
Stage* StageOf(HWND window);

// What every loop does with the messages of Stage's windows: keys of commands and dialogs work in all of
// them.
void HandleMessage(Stage* stage, MSG message);

// A message box; `owner` null: the main window.
void ShowMessage(const Stage& stage, HWND owner, const std::string& text, UINT icon);

// After another animation or step is to be shown: from its beginning, or from where the one before stood.
enum class PlayFrom { Start, HereOn };
void ShowFilmAnew(Stage* stage, PlayFrom from);

// Sets the timer to the next frame, or stops it.
void SetPlayTimer(Stage* stage);

}  // namespace kfx::stage
