// SPDX-License-Identifier: MIT
#include "stage/plugin_host.h"

#include <utility>

#include "commands/text_windows.h"
#include "driven/plugin_controls.h"
#include "driven/settings_folder.h"
#include "stage/plugin_guard.h"
#include "stage/plugin_opening.h"
#include "stage/release_later.h"
#include "stage/stage.h"
#include "stage/stage_messages.h"
#include "stage/steps.h"

namespace kfx::stage {

using namespace commands;
using namespace driven;

namespace {

constexpr char kWhyFailed[] =
    "The plug-in has failed before and is not used again. Save your work and start Stage once more.";
constexpr char kWhyGivenUp[] =
    "The plug-in was given up and is not used again. Save your work and start Stage once more.";

bool PreparePlugin(Stage* stage) {
    PluginHost& plugin = stage->plugin;
    if (plugin.whyLost) {
        ShowMessage(*stage, nullptr, plugin.whyLost, MB_ICONWARNING);
        return false;
    }
    plugin.library.path = plugin.path;
    PrepareGuard();
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

uint64_t NumberOf(const FILETIME& time) {
    return static_cast<uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

PluginSigns SignsOf(PluginOpening* opening) {
    PluginSigns signs;
    signs.answers = opening->answered.exchange(false);
    signs.isInHost = opening->inHost > 0;
    signs.isBuilding = opening->progress.total > 0;
    signs.isStopped = opening->progress.stop;
    signs.requests = opening->session.requestsAnswered;
    FILETIME ignored, system, user;
    if (GetThreadTimes(opening->thread, &ignored, &ignored, &system, &user))
        signs.processorTime = NumberOf(system) + NumberOf(user);
    // The question before is answered, or there was no owner yet that could be asked.
    const HWND owner = opening->owner;
    if (signs.answers && (!owner || !PostMessageW(owner, kAreYouThere, 0, 0))) opening->answered = true;
    return signs;
}

// After the record has left its place.
void EndOpening(Stage* stage) {
    EndSession();
    KillTimer(stage->window, kLookTimer);
    ClearProgress(stage);
    UpdateControls(stage);
}

// Its thread may stand in the plug-in for ever, and looks at the record: nobody frees it.
PluginOpening* LeaveOpening(Stage* stage, const char* why) {
    PluginOpening* const left = stage->plugin.opening.release();
    stage->plugin.whyLost = why;
    EndOpening(stage);
    return left;
}

void TellLoss(const Stage& stage, const std::string& what, const std::string& report) {
    ShowMessage(stage, nullptr,
                what +
                    " Your animation and its results are all here; save them, and start Stage once more to "
                    "use the plug-in again.\n\n" +
                    (report.empty() ? "" : "A report is in " + report),
                MB_ICONERROR);
}

// False: it has begun to ask something of Stage, and so is not silent any more.
bool AbandonPlugin(PluginOpening* opening) {
    opening->abandoned = true;
    if (opening->inHost == 0) return true;
    opening->abandoned = false;
    return false;
}

// Takes a window off the screen without its thread. Windows before 8 have no such way.
void Cloak(HWND window) {
    using SetAttribute = HRESULT(WINAPI*)(HWND, DWORD, const void*, DWORD);
    constexpr DWORD kCloak = 13;
    const HMODULE composer = LoadLibraryExW(L"dwmapi.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    const auto address =
        composer ? reinterpret_cast<void*>(GetProcAddress(composer, "DwmSetWindowAttribute")) : nullptr;
    const BOOL cloaked = TRUE;
    if (address) reinterpret_cast<SetAttribute>(address)(window, kCloak, &cloaked, sizeof cloaked);
}

// The window's thread takes part in hiding it, and this one must not wait for that.
void HideForGood(HWND window) {
    if (!window) return;
    Cloak(window);
    const auto hide = [](void* pointer) -> DWORD {
        SetWindowPos(
            static_cast<HWND>(pointer), nullptr, 0, 0, 0, 0,
            SWP_HIDEWINDOW | SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOSENDCHANGING);
        return 0;
    };
    if (const HANDLE thread = CreateThread(nullptr, 0, hide, window, 0, nullptr)) CloseHandle(thread);
}

// The input's hash takes a while.
void WriteHangReport(Stage* stage, PluginOpening* opening) {
    const auto report = std::make_shared<std::string>();
    const auto tell = [report](Stage* done) { TellLoss(*done, "The plug-in was given up.", *report); };
    const auto write = [report, opening](Work*) {
        struct Hang {
            HANDLE thread;
            CrashFacts* facts;
        };
        CrashFacts facts, ignored;
        Hang hang = {opening->thread, &facts};
        CallGuarded(
            [](void* context) {
                const auto* own = static_cast<Hang*>(context);
                NoteHang(own->thread, own->facts);
            },
            &hang, nullptr, &ignored);
        *report = WriteReportGuarded(*opening, facts);
    };
    if (!StartWork(stage, "Writing a report", write, tell)) tell(stage);
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
    opening->thread = CreateThread(nullptr, 0, RunPluginThread, opening.get(), 0, nullptr);
    if (!opening->thread) {
        EndSession();
        ShowMessage(*stage, nullptr, "The plug-in cannot be started: no thread is to be had.", MB_ICONERROR);
        return;
    }
    plugin.opening = std::move(opening);
    SetTimer(stage->window, kLookTimer, kLookMilliseconds, nullptr);
    UpdateControls(stage);
}

void StopPluginBuild(Stage* stage) {
    if (IsPluginOpen(*stage) && AskToStop(&stage->plugin.opening->progress)) ShowProgress(stage);
}

bool ClosePlugin(Stage* stage) {
    const HWND window = stage->plugin.opening->window;
    if (!window || IsPluginSilent(*stage)) return false;
    PressButton(window, kCancelButton);
    return true;
}

bool IsPluginSilent(const Stage& stage) { return IsPluginOpen(stage) && stage.plugin.opening->isSilent; }

void OnLookAtPlugin(Stage* stage) {
    if (!IsPluginOpen(*stage)) return;
    PluginOpening* opening = stage->plugin.opening.get();
    const bool isSilent = NoteLook(&opening->watch, SignsOf(opening));
    if (std::exchange(opening->isSilent, isSilent) == isSilent) return;
    ClearProgress(stage);
    ShowProgress(stage);
    UpdateControls(stage);
}

void OnGiveUpPlugin(Stage* stage) {
    if (MessageBoxW(
            stage->window,
            L"The plug-in does not answer. Give it up?\n\nYour animation and its results stay. What is "
            L"set in the plug-in's window is lost, and the plug-in can be used again when Stage has "
            L"been started once more.",
            kStageTitle, MB_YESNO | MB_ICONWARNING) != IDYES)
        return;
    // It may have answered meanwhile.
    if (!IsPluginSilent(*stage) || !AbandonPlugin(stage->plugin.opening.get())) {
        ShowStatus(stage, "The plug-in answers again.");
        return;
    }
    PluginOpening* opening = LeaveOpening(stage, kWhyGivenUp);
    stage->plugin.closesStage = false;
    HideForGood(opening->window);
    WriteHangReport(stage, opening);
}

void OnPluginEnded(Stage* stage) {
    PluginHost& plugin = stage->plugin;
    if (!plugin.opening) return;
    if (plugin.opening->crashed) {
        TellLoss(*stage, "The plug-in has failed and was closed.",
                 LeaveOpening(stage, kWhyFailed)->crashReport);
    } else {
        std::unique_ptr<PluginOpening> ended = std::move(plugin.opening);
        EndOpening(stage);
        WaitForSingleObject(ended->thread, INFINITE);
        CloseHandle(ended->thread);
        const std::string error = std::move(ended->error);
        ReleaseLater(std::move(ended));
        if (!error.empty()) ShowMessage(*stage, nullptr, error, MB_ICONERROR);
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
