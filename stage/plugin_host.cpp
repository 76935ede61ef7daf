// SPDX-License-Identifier: MIT
#include "stage/plugin_host.h"

#include <utility>

#include "commands/text_windows.h"
#include "driven/plugin_controls.h"
#include "driven/settings_folder.h"
#include "stage/plugin_opening.h"
#include "stage/stage.h"
#include "stage/stage_messages.h"
#include "stage/steps.h"

namespace kfx::stage {

using namespace commands;
using namespace driven;

namespace {

bool PreparePlugin(Stage* stage) {
    PluginHost& plugin = stage->plugin;
    std::string error;
    if (plugin.lost) {
        ShowMessage(*stage, nullptr,
                    "The plug-in has failed before and is not used again. Save your work and start Stage "
                    "once more.",
                    MB_ICONWARNING);
        return false;
    }
    if (!plugin.library.doBuild && !LoadPlugin(plugin.path, nullptr, &plugin.library, &error)) {
        ShowMessage(*stage, nullptr, error, MB_ICONERROR);
        return false;
    }
    MakeSettingsFolder();
    return true;
}

void FillOpening(Stage* stage, const SettingsDocument& settings, PluginOpening* opening) {
    const History& history = stage->history;
    opening->library = &stage->plugin.library;
    opening->stageWindow = stage->window;
    opening->pool = stage->document.pool;
    opening->folder = stage->remembered.folder;
    opening->settings = settings;
    ReadPaletteSearch(&stage->plugin.search);
    opening->search = stage->plugin.search;
    if (!history.steps.empty()) {
        opening->film = history.steps[history.current].film;
        opening->originalComment = SourceFilm(history)->facts.comment;
    }
    HostSession* session = &opening->session;
    FillActions(opening);
    session->sourcePath = stage->document.path;
    session->offerSource = opening->film != nullptr;
    session->windowWidth = static_cast<uint32_t>(stage->remembered.pluginWindow.cx);
    session->windowHeight = static_cast<uint32_t>(stage->remembered.pluginWindow.cy);
}

void BringToFront(const PluginOpening& opening) {
    const HWND window = opening.window;
    if (window) SetForegroundWindow(GetLastActivePopup(window));
}

void RememberPluginSize(Stage* stage) {
    RECT place;
    const HWND window = stage->plugin.opening->window;
    if (window && GetWindowRect(window, &place))
        stage->remembered.pluginWindow = {place.right - place.left, place.bottom - place.top};
}

}  // namespace

PluginHost::PluginHost() = default;
PluginHost::~PluginHost() = default;

bool IsPluginOpen(const Stage& stage) { return stage.plugin.opening != nullptr; }

bool IsPluginBuilding(const Stage& stage) {
    return IsPluginOpen(stage) && stage.plugin.opening->progress.total > 0;
}

void OpenPlugin(Stage* stage, const SettingsDocument& settings) {
    PluginHost& plugin = stage->plugin;
    if (plugin.opening) {
        BringToFront(*plugin.opening);
        return;
    }
    if (!PreparePlugin(stage)) return;
    auto opening = std::make_unique<PluginOpening>();
    FillOpening(stage, settings, opening.get());
    BeginSession(&opening->session, kHostTakesSupercompressed | kHostTakesTrueColor);
    StandBeforeAnswers(opening.get());
    opening->thread = CreateThread(nullptr, 0, RunPluginThread, opening.get(), 0, &opening->threadId);
    if (!opening->thread) {
        EndSession();
        ShowMessage(*stage, nullptr, "The plug-in cannot be started: no thread is to be had.", MB_ICONERROR);
        return;
    }
    plugin.opening = std::move(opening);
    UpdateControls(stage);
}

void StopPluginBuild(Stage* stage) {
    if (IsPluginOpen(*stage) && AskToStop(&stage->plugin.opening->progress)) ShowProgress(stage);
}

bool ClosePlugin(Stage* stage) {
    const HWND window = stage->plugin.opening->window;
    if (!window || IsHungAppWindow(window)) return false;
    PostMessageA(window, WM_COMMAND, MAKEWPARAM(kCancelButton, BN_CLICKED),
                 reinterpret_cast<LPARAM>(GetDlgItem(window, kCancelButton)));
    return true;
}

void OnPluginEnded(Stage* stage) {
    PluginHost& plugin = stage->plugin;
    if (!plugin.opening) return;
    EndSession();
    const bool crashed = plugin.opening->crashed;
    const std::string report = plugin.opening->crashReport;
    const std::string error = plugin.opening->error;
    if (crashed) {
        // Its thread may stand in the plug-in for ever, and looks at the record.
        plugin.lost = true;
        CloseHandle(plugin.opening->thread);
        static_cast<void>(plugin.opening.release());
    } else {
        WaitForSingleObject(plugin.opening->thread, INFINITE);
        CloseHandle(plugin.opening->thread);
        plugin.opening.reset();
    }
    ClearProgress(stage);
    UpdateControls(stage);
    if (!error.empty()) ShowMessage(*stage, nullptr, error, MB_ICONERROR);
    if (crashed) {
        ShowMessage(
            *stage, nullptr,
            "The plug-in has failed and was closed. Your animation and its results are all here; save "
            "them, and start Stage once more to use the plug-in again.\n\n" +
                (report.empty() ? "" : "A report is in " + report),
            MB_ICONERROR);
    }
    SetForegroundWindow(stage->window);
    if (std::exchange(plugin.closesStage, false)) PostMessageW(stage->window, WM_CLOSE, 0, 0);
}

void OnPluginBuilt(Stage* stage, Step* given, bool isTest) {
    Step step = std::move(*std::unique_ptr<Step>(given));
    RememberPluginSize(stage);
    TakeStep(stage, std::move(step), isTest);
}

void OnPluginSource(Stage* stage, OpenedSource* given) {
    const std::unique_ptr<OpenedSource> opened(given);
    TakeOpened(stage, opened->path, opened->film);
    stage->document.settings = opened->settings;
    NoteOpenedFile(stage, opened->path);
    UpdateControls(stage);
}

void OnPositionChanging(const Stage& stage, WINDOWPOS* position) {
    if (!IsPluginOpen(stage) || (position->flags & SWP_NOZORDER)) return;
    const HWND window = stage.plugin.opening->window;
    if (window && IsWindowVisible(window)) position->hwndInsertAfter = GetLastActivePopup(window);
}

}  // namespace kfx::stage
