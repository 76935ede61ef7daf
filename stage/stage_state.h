// SPDX-License-Identifier: MIT
// What Stage's window holds while it is open. There is one window; its procedure reaches this through the
// window's user data.
#pragma once

#include <cstdint>
#include <string>

#include <windows.h>

#include "commands/built_animation.h"
#include "driven/plugin_library.h"
#include "stage/animation_view.h"
#include "stage/remembered.h"

namespace kfx::stage {

struct StageState {
    HWND window = nullptr;
    HWND openButton = nullptr;
    HWND effectsButton = nullptr;
    HWND saveButton = nullptr;
    HFONT font = nullptr;
    HFONT smallFont = nullptr;
    int dpi = 96;

    Animation source;
    std::string sourcePath;
    Animation result;                    // for playing
    commands::BuiltAnimation built;      // for saving
    commands::SourceRecord builtSource;  // what comes back into the built frames
    bool resultSaved = true;

    bool playing = true;
    uint64_t shownTime = 0;  // milliseconds into both animations
    uint64_t lastTick = 0;
    size_t sourceFrame = 0;
    size_t resultFrame = 0;

    std::string status;
    int progressCurrent = 0;
    int progressTotal = 0;

    std::string pluginPath;
    driven::PluginLibrary library;
    bool pluginOpen = false;
    Remembered remembered;
};

// Reads the animation into the window. Shows a message and keeps what was there when that fails.
bool LoadSource(StageState* state, const std::string& path);

// Starts both animations from their beginning and redraws everything.
void RestartAnimations(StageState* state);

void RedrawStatus(StageState* state);
void ShowMessage(const StageState& state, HWND owner, const std::string& text, UINT icon);

// Runs the plug-in's window on the current source; results arrive in the state while it is open.
void RunPluginWindow(StageState* state);

}  // namespace kfx::stage
