// SPDX-License-Identifier: MIT
#include "stage/stage_window.h"

#include <algorithm>
#include <utility>

#include <windows.h>
#include <commctrl.h>
#include <shellapi.h>
#include <windowsx.h>

#include "commands/result_files.h"
#include "commands/text_windows.h"
#include "driven/settings_folder.h"
#include "stage/file_choice.h"
#include "stage/stage_painting.h"
#include "stage/stage_resources.h"
#include "stage/stage_state.h"

namespace kfx::stage {

using namespace commands;
using namespace driven;

namespace {

constexpr wchar_t kClassName[] = L"KestrelStage";
constexpr wchar_t kTitle[] = L"Kestrel Stage";
constexpr UINT_PTR kPlayTimer = 1;
constexpr UINT kPlayMilliseconds = 15;

// Device-independent pixels.
constexpr int kStartWidth = 900, kStartHeight = 560;

StageState* StateOf(HWND window) {
    return reinterpret_cast<StageState*>(GetWindowLongPtrW(window, GWLP_USERDATA));
}

// Windows before 10 have one resolution for all screens.
int DpiOf(HWND window) {
    using GetDpi = UINT(WINAPI*)(HWND);
    const auto address =
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"user32.dll"), "GetDpiForWindow"));
    if (address) return static_cast<int>(reinterpret_cast<GetDpi>(address)(window));
    const HDC screen = GetDC(nullptr);
    const int dpi = GetDeviceCaps(screen, LOGPIXELSY);
    ReleaseDC(nullptr, screen);
    return dpi;
}

HWND MakeButton(HWND window, const wchar_t* text, int id) {
    return CreateWindowExW(0, L"BUTTON", text, WS_CHILD | WS_VISIBLE | WS_TABSTOP, 0, 0, 0, 0, window,
                           reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), GetModuleHandleW(nullptr),
                           nullptr);
}

void UpdateCommands(const StageState& state) {
    const bool canSave = !state.built.frames.empty() && !state.pluginOpen;
    EnableWindow(state.saveButton, canSave);
    EnableMenuItem(GetMenu(state.window), IDC_SAVE, canSave ? MF_ENABLED : MF_GRAYED);
    CheckMenuItem(GetMenu(state.window), IDC_PLAY, state.playing ? MF_CHECKED : MF_UNCHECKED);
    const std::wstring name = Widen(FileNameOf(state.sourcePath));
    SetWindowTextW(state.window, name.empty() ? kTitle : (name + L" - " + kTitle).c_str());
}

void Tick(StageState* state) {
    const uint64_t now = GetTickCount64();
    const uint64_t passed = now - std::exchange(state->lastTick, now);
    if (!state->playing) return;
    state->shownTime += passed;
    const size_t sourceFrame = FrameAt(state->source, state->shownTime);
    const size_t resultFrame = FrameAt(state->result, state->shownTime);
    const RECT cards[2] = {CardArea(*state, kSourceCard), CardArea(*state, kResultCard)};
    if (std::exchange(state->sourceFrame, sourceFrame) != sourceFrame)
        InvalidateRect(state->window, &cards[0], FALSE);
    if (std::exchange(state->resultFrame, resultFrame) != resultFrame)
        InvalidateRect(state->window, &cards[1], FALSE);
}

bool SaveResult(StageState* state) {
    if (state->built.frames.empty()) return false;
    const std::string name = FileNameOf(state->sourcePath);
    std::string path = FolderOf(state->sourcePath) + name.substr(0, name.find_last_of('.')) + "-result.gif";
    if (!ChooseFileToSave(state->window, &path)) return false;
    const HCURSOR cursor = SetCursor(LoadCursorA(nullptr, IDC_WAIT));
    WrittenResult written;
    const std::vector<std::string>& files = written.files;
    std::string error;
    // The dialog has asked whether the chosen file may be replaced.
    const bool saved =
        MayWriteResult(ResultPaths(path, state->built.frames.size()), {state->sourcePath}, true, &error) &&
        WriteResult(path, state->built, state->builtSource, {}, &written, &error);
    SetCursor(cursor);
    if (!saved) {
        ShowMessage(*state, state->window, error, MB_ICONERROR);
        return false;
    }
    state->resultSaved = true;
    state->status =
        "Saved " + FileNameOf(files.front()) + (files.size() > 1 ? " and the frames after it" : "");
    InvalidateRect(state->window, nullptr, FALSE);
    return true;
}

// True: the result is saved, or the user does not want it.
bool MayDropResult(StageState* state) {
    if (state->resultSaved) return true;
    const int answer = MessageBoxW(state->window, L"The result has not been saved. Save it now?", kTitle,
                                   MB_YESNOCANCEL | MB_ICONQUESTION);
    return answer == IDNO || (answer == IDYES && SaveResult(state));
}

void OpenFromUser(StageState* state) {
    std::string path;
    if (ChooseAnimationToOpen(state->window, state->remembered.folder, &path)) LoadSource(state, path);
}

void OpenDropped(StageState* state, HDROP drop) {
    std::wstring path(DragQueryFileW(drop, 0, nullptr, 0) + 1, L'\0');
    path.resize(DragQueryFileW(drop, 0, path.data(), static_cast<UINT>(path.size())));
    DragFinish(drop);
    if (!state->pluginOpen) LoadSource(state, Narrow(path));
}

void HandleCommand(StageState* state, int id) {
    if (state->pluginOpen) return;
    switch (id) {
        case IDC_OPEN:
            OpenFromUser(state);
            break;
        case IDC_EFFECTS:
            RunPluginWindow(state);
            break;
        case IDC_SAVE:
            SaveResult(state);
            break;
        case IDC_EXIT:
            SendMessageW(state->window, WM_CLOSE, 0, 0);
            break;
        case IDC_PLAY:
            state->playing = !state->playing;
            break;
        case IDC_ABOUT:
            ShowMessage(*state, state->window,
                        "Kestrel Stage 16.0a\n\nShows animations and runs the Kestrel FX plug-in on them.\n"
                        "The program kestrel does the same on the command line.",
                        MB_ICONINFORMATION);
            break;
    }
    UpdateCommands(*state);
}

void Create(StageState* state, HWND window) {
    state->window = window;
    state->dpi = DpiOf(window);
    state->openButton = MakeButton(window, L"Open...", IDC_OPEN);
    state->effectsButton = MakeButton(window, L"Effects plug-in...", IDC_EFFECTS);
    state->saveButton = MakeButton(window, L"Save result as...", IDC_SAVE);
    MakeFonts(state);
    UpdateCommands(*state);
    DragAcceptFiles(window, TRUE);
    state->lastTick = GetTickCount64();
    SetTimer(window, kPlayTimer, kPlayMilliseconds, nullptr);
}

void ChangeDpi(StageState* state, int dpi, const RECT& place) {
    state->dpi = dpi;
    MakeFonts(state);
    SetWindowPos(state->window, nullptr, place.left, place.top, place.right - place.left,
                 place.bottom - place.top, SWP_NOZORDER | SWP_NOACTIVATE);
}

void RememberPlace(StageState* state) {
    WINDOWPLACEMENT placement = {};
    placement.length = sizeof placement;
    if (!GetWindowPlacement(state->window, &placement)) return;
    state->remembered.window = placement.rcNormalPosition;
    state->remembered.maximized = placement.showCmd == SW_SHOWMAXIMIZED;
    WriteRemembered(state->remembered);
}

LRESULT CALLBACK StageProcedure(HWND window, UINT message, WPARAM word, LPARAM pointer) {
    if (message == WM_NCCREATE) {
        const auto* creation = reinterpret_cast<CREATESTRUCTW*>(pointer);
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(creation->lpCreateParams));
    }
    StageState* state = StateOf(window);
    if (!state) return DefWindowProcW(window, message, word, pointer);
    switch (message) {
        case WM_CREATE:
            Create(state, window);
            return 0;
        case WM_SIZE:
            PlaceButtons(*state);
            InvalidateRect(window, nullptr, FALSE);
            return 0;
        case WM_GETMINMAXINFO:
            reinterpret_cast<MINMAXINFO*>(pointer)->ptMinTrackSize = {Scaled(*state, 700),
                                                                      Scaled(*state, 380)};
            return 0;
        case WM_DPICHANGED:
            ChangeDpi(state, HIWORD(word), *reinterpret_cast<RECT*>(pointer));
            return 0;
        case WM_ERASEBKGND:
            return 1;
        case WM_PAINT:
            PaintStage(*state);
            return 0;
        case WM_TIMER:
            Tick(state);
            return 0;
        case WM_COMMAND:
            HandleCommand(state, LOWORD(word));
            return 0;
        case WM_DROPFILES:
            OpenDropped(state, reinterpret_cast<HDROP>(word));
            return 0;
        case WM_CLOSE:
            if (!state->pluginOpen && MayDropResult(state)) DestroyWindow(window);
            return 0;
        case WM_DESTROY:
            RememberPlace(state);
            PostQuitMessage(0);
            return 0;
    }
    return DefWindowProcW(window, message, word, pointer);
}

bool RegisterStageClass() {
    WNDCLASSEXW stageClass = {};
    stageClass.cbSize = sizeof stageClass;
    stageClass.style = CS_HREDRAW | CS_VREDRAW;
    stageClass.lpfnWndProc = StageProcedure;
    stageClass.hInstance = GetModuleHandleW(nullptr);
    stageClass.hIcon = LoadIconW(stageClass.hInstance, MAKEINTRESOURCEW(IDI_STAGE));
    stageClass.hCursor = LoadCursorA(nullptr, IDC_ARROW);
    stageClass.lpszMenuName = MAKEINTRESOURCEW(IDM_STAGE);
    stageClass.lpszClassName = kClassName;
    return RegisterClassExW(&stageClass) != 0;
}

// The remembered place when it is on a screen that is still there.
void PlaceStage(const StageState& state, bool maximized) {
    const RECT place = state.remembered.window;
    if (place.right > place.left && MonitorFromRect(&place, MONITOR_DEFAULTTONULL)) {
        SetWindowPos(state.window, nullptr, place.left, place.top, place.right - place.left,
                     place.bottom - place.top, SWP_NOZORDER);
    } else {
        SetWindowPos(state.window, nullptr, 0, 0, Scaled(state, kStartWidth), Scaled(state, kStartHeight),
                     SWP_NOZORDER | SWP_NOMOVE);
    }
    ShowWindow(state.window, maximized ? SW_SHOWMAXIMIZED : SW_SHOWNORMAL);
}

}  // namespace

bool LoadSource(StageState* state, const std::string& path) {
    Animation loaded;
    std::string error;
    const HCURSOR cursor = SetCursor(LoadCursorA(nullptr, IDC_WAIT));
    const bool read = ReadAnimation(path, &loaded, &error);
    SetCursor(cursor);
    if (!read) {
        ShowMessage(*state, state->window, error, MB_ICONWARNING);
        return false;
    }
    if (!MayDropResult(state)) return false;
    state->source = std::move(loaded);
    state->sourcePath = AbsolutePath(path);
    state->remembered.folder = FolderOf(state->sourcePath);
    state->status = state->source.warning;
    state->result = {};
    state->built = {};
    state->resultSaved = true;
    RestartAnimations(state);
    return true;
}

void RestartAnimations(StageState* state) {
    state->shownTime = 0;
    state->sourceFrame = 0;
    state->resultFrame = 0;
    UpdateCommands(*state);
    InvalidateRect(state->window, nullptr, FALSE);
}

void RedrawStatus(StageState* state) {
    const RECT area = StatusArea(*state);
    InvalidateRect(state->window, &area, FALSE);
    UpdateWindow(state->window);
}

void ShowMessage(const StageState& state, HWND owner, const std::string& text, UINT icon) {
    MessageBoxW(owner ? owner : state.window, Widen(text).c_str(), kTitle, MB_OK | icon);
}

int RunStageWindow(const std::string& path) {
    StageState state;
    state.pluginPath = DefaultPluginPath();
    state.remembered = ReadRemembered();
    const HINSTANCE module = GetModuleHandleW(nullptr);
    InitCommonControls();
    if (!RegisterStageClass()) return 1;
    const HWND window =
        CreateWindowExW(0, kClassName, kTitle, WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, CW_USEDEFAULT,
                        CW_USEDEFAULT, kStartWidth, kStartHeight, nullptr, nullptr, module, &state);
    if (!window) return 1;
    PlaceStage(state, state.remembered.maximized);
    const std::string leftSettings = PutBackLeftSettings();
    if (!leftSettings.empty()) ShowMessage(state, window, leftSettings, MB_ICONWARNING);
    if (!path.empty()) LoadSource(&state, path);

    const HACCEL accelerators = LoadAcceleratorsW(module, MAKEINTRESOURCEW(IDA_STAGE));
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        if (TranslateAcceleratorW(window, accelerators, &message) || IsDialogMessageW(window, &message))
            continue;
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    DeleteObject(state.font);
    DeleteObject(state.smallFont);
    return 0;
}

}  // namespace kfx::stage
