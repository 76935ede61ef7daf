// SPDX-License-Identifier: MIT
// Stage's window as the plug-in's host: what the plug-in asks for goes to the user.
#include <cstdio>
#include <utility>

#include <windows.h>
#include <shellapi.h>

#include "commands/host_session.h"
#include "commands/text_windows.h"
#include "driven/plugin_controls.h"
#include "driven/settings_folder.h"
#include "stage/file_choice.h"
#include "stage/stage_state.h"

namespace kfx::stage {

using namespace commands;
using namespace driven;

namespace {

constexpr UINT_PTR kOfferTimer = 2;
constexpr UINT kOfferMilliseconds = 30;

// The session of the open plug-in window, for the timer that offers it Stage's source.
HostSession* offeringSession = nullptr;

StageState* StateOf(HostSession* session) { return static_cast<StageState*>(session->user); }

bool AskForAnimation(HostSession* session, void* owner, std::string* path) {
    return ChooseAnimationToOpen(static_cast<HWND>(owner), StateOf(session)->remembered.folder, path);
}

bool AskForColor(HostSession*, void* owner, const uint8_t* palette, uint32_t* color) {
    return ChooseColorFrom(static_cast<HWND>(owner), palette, color);
}

// The help document lies beside the plug-in. A browser understands the topic behind it only in an address.
bool ShowHelpDocument(HostSession* session, const std::string& reference) {
    const size_t hash = reference.find('#');
    const std::string document =
        FolderOf(StateOf(session)->library.path) + FileNameOf(reference.substr(0, hash));
    if (GetFileAttributesW(Widen(document).c_str()) == INVALID_FILE_ATTRIBUTES) return false;
    std::string address = "file:///";
    for (const char c : document) {
        if (c == ' ' || c == '#' || c == '%') {
            char escape[4];
            std::snprintf(escape, sizeof escape, "%%%02X", static_cast<unsigned>(c));
            address += escape;
        } else {
            address += c == '\\' ? '/' : c;
        }
    }
    if (hash != std::string::npos) address += reference.substr(hash);
    const auto answer = ShellExecuteW(StateOf(session)->window, L"open", Widen(address).c_str(), nullptr,
                                      nullptr, SW_SHOWNORMAL);
    return reinterpret_cast<INT_PTR>(answer) > 32;
}

void ShowBuildProgress(HostSession* session) {
    StageState* state = StateOf(session);
    {
        const std::lock_guard<std::mutex> lock(session->statusLock);
        state->status = session->status;
    }
    state->progressCurrent = session->progressCurrent;
    state->progressTotal = session->progressTotal;
    RedrawStatus(state);
}

// The user has chosen another source in the plug-in's window.
void ShowSource(HostSession* session) {
    StageState* state = StateOf(session);
    state->sourcePath = session->sourcePath;
    state->remembered.folder = FolderOf(session->sourcePath);
    RestartAnimations(state);
}

void TakeResult(HostSession* session) {
    StageState* state = StateOf(session);
    state->built = session->built;
    state->builtSource = session->record;
    state->result = PlayBuilt(state->built, state->builtSource);
    state->resultSaved = false;
    state->status.clear();
    state->progressTotal = 0;
    RestartAnimations(state);
}

void ReportToUser(HostSession* session, void* owner, const std::string& message) {
    ShowMessage(*StateOf(session), static_cast<HWND>(owner), message, MB_ICONWARNING);
}

BOOL CALLBACK FindReadyPlugin(HWND window, LPARAM pointer) {
    const HWND preview = GetDlgItem(window, kPreviewArea);
    const bool ready = GetDlgItem(window, kEffectList) && preview && IsWindowVisible(preview);
    if (ready) *reinterpret_cast<HWND*>(pointer) = window;
    return !ready;
}

// Once the plug-in's window is there: presses its "Select..." for the user, unless it has asked for an
// animation by itself, and notes the window's size.
void CALLBACK OfferSource(HWND window, UINT, UINT_PTR timer, DWORD) {
    HWND plugin = nullptr;
    EnumThreadWindows(GetCurrentThreadId(), FindReadyPlugin, reinterpret_cast<LPARAM>(&plugin));
    if (!plugin || !offeringSession) return;
    KillTimer(window, timer);
    RECT place;
    GetWindowRect(plugin, &place);
    StateOf(offeringSession)->remembered.pluginWindow = {place.right - place.left, place.bottom - place.top};
    if (offeringSession->offerSource && offeringSession->animationsOpened == 0) {
        PostMessageA(plugin, WM_COMMAND, MAKEWPARAM(kSelectButton, BN_CLICKED),
                     reinterpret_cast<LPARAM>(GetDlgItem(plugin, kSelectButton)));
    }
}

void FillSession(StageState* state, HostSession* session) {
    session->user = state;
    session->actions.chooseAnimation = AskForAnimation;
    session->actions.chooseColor = AskForColor;
    session->actions.showHelp = ShowHelpDocument;
    session->actions.showProgress = ShowBuildProgress;
    session->actions.sourceOpened = ShowSource;
    session->actions.taskClosed = TakeResult;
    session->actions.reportError = ReportToUser;
    session->sourcePath = state->sourcePath;
    session->source = &state->source;
    session->offerSource = !state->source.frames.empty();
    session->offerAgain = false;
    session->keepSource = true;
    session->windowWidth = static_cast<uint32_t>(state->remembered.pluginWindow.cx);
    session->windowHeight = static_cast<uint32_t>(state->remembered.pluginWindow.cy);
}

}  // namespace

void RunPluginWindow(StageState* state) {
    if (state->pluginOpen) return;
    std::string error;
    if (!state->library.doBuild && !LoadPlugin(state->pluginPath, nullptr, &state->library, &error)) {
        ShowMessage(*state, state->window, error, MB_ICONERROR);
        return;
    }
    MakeSettingsFolder();
    HostSession session;
    FillSession(state, &session);
    BeginSession(&session, kHostTakesSupercompressed | kHostTakesTrueColor);
    state->pluginOpen = true;
    offeringSession = &session;
    SetTimer(state->window, kOfferTimer, kOfferMilliseconds, OfferSource);
    state->library.doBuild(state->window, &session.context);
    KillTimer(state->window, kOfferTimer);
    offeringSession = nullptr;
    state->pluginOpen = false;
    EndSession();

    state->status.clear();
    state->progressTotal = 0;
    RestartAnimations(state);
}

}  // namespace kfx::stage
