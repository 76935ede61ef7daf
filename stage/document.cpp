// SPDX-License-Identifier: MIT
#include "stage/document.h"

#include <algorithm>
#include <utility>

#include "commands/command_line.h"
#include "commands/recipe_file.h"
#include "commands/recipe_text.h"
#include "commands/text_windows.h"
#include "stage/file_choice.h"
#include "stage/plugin_opening.h"
#include "stage/plugin_source.h"
#include "stage/stage.h"
#include "stage/steps.h"

namespace kfx::stage {

using namespace commands;

namespace {

constexpr char kSettingsEnding[] = ".kx1";

// What the worker reads.
struct Reading {
    std::string path;
    std::shared_ptr<FramePool> pool;
    std::shared_ptr<const Film> film;  // null: `error` says why
    SettingsDocument settings;
    std::string error;
};

// Source, result and what both need on their way through the plug-in are about 17 bytes for each pixel of an
// animation, which is to stay within the memory of the machine.
ReadLimits LimitsOfMachine() {
    ReadLimits limits;
    MEMORYSTATUSEX memory = {};
    memory.dwLength = sizeof memory;
    if (GlobalMemoryStatusEx(&memory))
        limits.maxPixels = std::max(limits.maxPixels, memory.ullTotalPhys / 20);
    return limits;
}

void ReadFile(Reading* reading) {
    Animation animation;
    if (!ReadAnimation(reading->path, &animation, &reading->error, LimitsOfMachine())) return;
    Recipe recipe;
    std::string unread;
    // A picture is worth opening whatever its recipe is.
    if (!animation.recipe.empty() && ReadRecipe(animation.recipe, &recipe, &unread))
        reading->settings = recipe.document;
    reading->film = MakeFilm(std::move(animation), reading->pool.get());
}

void TakeReading(Stage* stage, const Reading& reading, MadeFile made) {
    if (!reading.film) {
        ShowStatus(stage, "");
        ShowMessage(*stage, nullptr, reading.error, MB_ICONWARNING);
        return;
    }
    NoteOpenedFile(stage, reading.path);
    TakeOpened(stage, reading.path, reading.film);
    stage->document.settings = reading.settings;
    if (reading.settings.lines.empty()) return;
    if (made == MadeFile::OpensPlugin)
        OnEffects(stage);
    else
        ShowStatus(stage, "This file tells how it was made: Effects opens with its settings.");
}

void OpenSettings(Stage* stage, const std::string& path) {
    RecipeFile file;
    Failure failure;
    if (!ReadRecipeFile(path, ReadLimits(), &file, &failure)) {
        ShowMessage(*stage, nullptr, failure.error, MB_ICONWARNING);
        return;
    }
    stage->document.settings = file.recipe.document;
    OnEffects(stage);
}

}  // namespace

void OpenFiles(Stage* stage, const std::vector<std::string>& paths, MadeFile made) {
    if (paths.empty()) return;
    if (IsWorking(*stage) || IsPluginBuilding(*stage)) {
        ShowStatus(stage, "Open it once this is done.");
        return;
    }
    if (IsPluginOpen(*stage) && !CanGiveSource(*stage->plugin.opening)) {
        ShowStatus(stage, "Close the plug-in's box first, then open the file.");
        return;
    }
    for (size_t i = paths.size(); i > 1; --i) RememberFile(&stage->remembered, AbsolutePath(paths[i - 1]));
    const std::string first = AbsolutePath(paths.front());
    // It asks about unsaved work when it opens the file.
    if (IsPluginOpen(*stage)) {
        GiveFile(*stage->plugin.opening, first);
        return;
    }
    if (EndingOf(first) == kSettingsEnding) {
        OpenSettings(stage, first);
        return;
    }
    if (!MayReplaceDocument(stage)) return;
    auto reading = std::make_shared<Reading>();
    reading->path = first;
    reading->pool = stage->document.pool;
    StartWork(
        stage, "Reading " + FileNameOf(first), [reading](Work*) { ReadFile(reading.get()); },
        [reading, made](Stage* done) { TakeReading(done, *reading, made); }, WhenStopped::IsLeft);
}

void NoteOpenedFile(Stage* stage, const std::string& path) {
    RememberFile(&stage->remembered, path);
    stage->remembered.folder = FolderOf(path);
}

bool MayReplaceDocument(Stage* stage) {
    if (!HasUnsavedStep(stage->history)) return true;
    const int answer = MessageBoxW(stage->window, L"The result has not been saved. Save it now?", kStageTitle,
                                   MB_YESNOCANCEL | MB_ICONQUESTION);
    return answer == IDNO || (answer == IDYES && SaveResultAs(stage));
}

void OnOpen(Stage* stage) {
    std::string path;
    if (ChooseAnimationToOpen(stage->window, stage->remembered.folder, &path))
        OpenFiles(stage, {path}, MadeFile::WaitsForPlugin);
}

void OnEffects(Stage* stage) { OpenPlugin(stage, std::exchange(stage->document.settings, {})); }

}  // namespace kfx::stage
