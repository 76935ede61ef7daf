// SPDX-License-Identifier: MIT
// The plug-in and its window, as the main window sees them. The plug-in runs on a thread of its own: while it
// works or hangs, the main window lives on.
#pragma once

#include <memory>
#include <string>

#include <windows.h>

#include "commands/settings_file.h"
#include "driven/plugin_library.h"
#include "stage/history.h"
#include "stage/palette_search.h"

namespace kfx::stage {

struct Stage;
struct PluginOpening;

struct OpenedSource {
    std::string path;
    std::shared_ptr<const Film> film;
    commands::SettingsDocument settings;  // what the file says about how it was made
};

struct PluginHost {
    PluginHost();
    ~PluginHost();
    PluginHost(const PluginHost&) = delete;
    PluginHost& operator=(const PluginHost&) = delete;

    std::string path;  // of the DLL
    driven::PluginLibrary library;
    std::unique_ptr<PluginOpening> opening;  // null: its window is closed
    PaletteSearch search;                    // as it was when the window opened the last time
    const char* whyLost = nullptr;           // a sentence: why it is not called any more; null: it may be
    bool closesStage = false;                // the main window closes once the plug-in's has closed
};

bool IsPluginOpen(const Stage& stage);

// Whether it builds something that can be stopped.
bool IsPluginBuilding(const Stage& stage);

// Opens its window on the step that is shown, or brings it to the front. `settings`: the lines are given to
// its controls before the user has them; empty: it opens as its user left it.
void OpenPlugin(Stage* stage, const commands::SettingsDocument& settings);

// The plug-in hands its frames over when it has made all of them: the first is refused, and it ends its
// build.
void StopPluginBuild(Stage* stage);

// Asks its window to close. False: it has none that could be asked, or does not answer.
bool ClosePlugin(Stage* stage);

// Whether it does not answer, and can be given up.
bool IsPluginSilent(const Stage& stage);

// Leaves a plug-in alone that does not answer, after a question, and writes a report. Its thread cannot be
// ended: it may hold locks that the system and Stage need. It stays until Stage ends, with the memory of the
// source that it was given, and what it asks of Stage is refused.
void OnGiveUpPlugin(Stage* stage);

// Looks at it, once in kLookMilliseconds; the timer has this number.
constexpr unsigned kLookTimer = 2;
void OnLookAtPlugin(Stage* stage);

// Answers to the messages of its thread.
void OnPluginEnded(Stage* stage);
void OnPluginBuilt(Stage* stage, Step* step, bool isTest);
void OnPluginSource(Stage* stage, OpenedSource* source);

// Keeps the plug-in's window above the main window.
void OnPositionChanging(const Stage& stage, WINDOWPOS* position);

}  // namespace kfx::stage
