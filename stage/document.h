// SPDX-License-Identifier: MIT
// The opened animation: reading it, writing what has become of it, and the files that come and go.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "commands/settings_file.h"
#include "stage/film.h"
#include "stage/size_box.h"

namespace kfx::stage {

struct Stage;
struct Step;

struct Document {
    std::string path;  // absolute; empty: none is open
    // What the opened file says about how it was made; the plug-in opens with it once.
    commands::SettingsDocument settings;
    WantedSize wantedSize;  // of the last time that one was asked for
    // Frames that are in memory; threads that make some share it.
    std::shared_ptr<FramePool> pool = std::make_shared<FramePool>();
};

// What happens with the settings in a file that the plug-in or kestrel has made.
enum class MadeFile { OpensPlugin, WaitsForPlugin };

// Asks about unsaved work, reads the first file on the worker and shows it; the others stand first among the
// recent ones. What was there stays when that fails. A settings document opens the plug-in with it.
void OpenFiles(Stage* stage, const std::vector<std::string>& paths, MadeFile made);

// The file stands first among the recent ones, and its folder is where dialogs begin.
void NoteOpenedFile(Stage* stage, const std::string& path);

// True: nothing is unsaved, it has been saved, or the user does not want it.
bool MayReplaceDocument(Stage* stage);

// Asks for a name and writes the current step. True: it is in the file; the caller has waited for it.
bool SaveResultAs(Stage* stage);

// Asks for a size, looks for files within it, and saves the one that the user chooses.
void OnSaveWithin(Stage* stage);

// "NAME-ENDING" beside the opened file.
std::string SuggestedPath(const Stage& stage, const std::string& ending);

// Notes that a step's result is in a file.
void MarkSaved(Stage* stage, const Step& saved);

// The frames of what is shown, as numbered PNG files.
void ExportFrames(Stage* stage);

void CopyShownFrame(Stage* stage);

void OnOpen(Stage* stage);

// Opens the plug-in with the document's settings, if it has any that have not been used.
void OnEffects(Stage* stage);

}  // namespace kfx::stage
