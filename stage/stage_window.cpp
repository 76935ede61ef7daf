// SPDX-License-Identifier: MIT
#include "stage/stage_window.h"

#include <memory>
#include <utility>

#include <windows.h>
#include <commctrl.h>
#include <shellapi.h>

#include "commands/text_windows.h"
#include "driven/settings_folder.h"
#include "stage/bar_buttons.h"
#include "stage/canvas.h"
#include "stage/command_table.h"
#include "stage/menus.h"
#include "stage/play_commands.h"
#include "stage/plugin_source.h"
#include "stage/stage.h"
#include "stage/stage_messages.h"
#include "stage/stage_resources.h"
#include "stage/steps.h"
#include "stage/view_commands.h"
#include "stage/wall_commands.h"
#include "stage/wall_view.h"
#include "stage/window_place.h"

namespace kfx::stage {

using namespace commands;
using namespace driven;

namespace {

constexpr wchar_t kClassName[] = L"KestrelStage";
constexpr WPARAM kSourceKey = 'O';

void OnCreate(Stage* stage, HWND window) {
    stage->window = window;
    stage->dpi = DpiOf(window);
    SetMenu(window, MakeMenuBar());
    MakeControls(stage);
    UpdateControls(stage);
    DragAcceptFiles(window, TRUE);
}

void OnDpiChanged(Stage* stage, int dpi, const RECT& place) {
    stage->dpi = dpi;
    MakeFonts(stage);
    if (stage->wall.window) SetWallDpi(stage->wall.window, dpi);
    FollowDpi(stage, place);
    UpdateControls(stage);
}

// The first question comes before there are controls.
void OnGetLeastSize(const Stage& stage, MINMAXINFO* sizes) {
    if (!stage.controls.font) return;
    const SIZE least = LeastWindowSize(stage);
    sizes->ptMinTrackSize = {least.cx, least.cy};
}

void OnDropFiles(Stage* stage, HDROP drop) { OpenFiles(stage, FilesOfDrop(drop), MadeFile::OpensPlugin); }

void OnFilesDropped(Stage* stage, std::vector<std::string>* given) {
    const std::unique_ptr<std::vector<std::string>> paths(given);
    OpenFiles(stage, *paths, MadeFile::OpensPlugin);
}

void OnCommand(Stage* stage, int id, int notification) {
    if (id >= kFirstRecent && id <= kLastRecent) {
        const auto row = static_cast<size_t>(id - kFirstRecent);
        const auto recent = stage->remembered.recent;
        if (row < recent.size()) OpenFiles(stage, {recent[row]}, MadeFile::WaitsForPlugin);
    } else if (id == kHistoryList) {
        const LRESULT row = SendMessageW(stage->controls.history, LB_GETCURSEL, 0, 0);
        const bool mayGo = !IsWorking(*stage) && !IsPluginOpen(*stage);
        if (notification == LBN_SELCHANGE && row >= 0) {
            if (mayGo) GoToStep(stage, static_cast<size_t>(row));
            UpdateControls(stage);
        }
    } else {
        RunCommand(stage, id);
    }
}

void OnSlider(Stage* stage) {
    const LRESULT frame = SendMessageW(stage->controls.slider, TBM_GETPOS, 0, 0);
    if (frame < 1) return;
    GoToFrame(stage, static_cast<size_t>(frame - 1));
    UpdateBarButtons(stage);
    UpdatePosition(*stage);
    InvalidateCanvas(*stage);
}

void OnDrawItem(const Stage& stage, const DRAWITEMSTRUCT& item) {
    if (item.CtlID == kHistoryList)
        DrawHistoryRow(stage, item);
    else
        DrawBarButton(stage, item);
}

void OnClose(Stage* stage) {
    if (IsPluginOpen(*stage)) {
        const bool isSecond = std::exchange(stage->plugin.closesStage, true);
        if (!isSecond && ClosePlugin(stage)) return;
        const wchar_t* const question =
            IsPluginSilent(*stage)
                ? L"The plug-in does not answer. Close Stage with it?\n\nUnsaved work can still be saved."
                : L"The plug-in has not ended its work. Close Stage all the same?\n\nUnsaved work can still "
                  L"be saved.";
        stage->plugin.closesStage =
            MessageBoxW(stage->window, question, kStageTitle, MB_YESNO | MB_ICONWARNING) == IDYES;
        if (!stage->plugin.closesStage) return;
    }
    if (IsWorking(*stage)) {
        // Files are written to their end; what is only looked for can be stopped.
        stage->work.closesStage = true;
        stage->work.progress.stop = true;
        ShowStatus(stage, "Stage closes once this is done.");
        return;
    }
    if (MayReplaceDocument(stage))
        DestroyWindow(stage->window);
    else
        stage->plugin.closesStage = false;
}

void OnDestroy(Stage* stage) {
    RememberWindow(stage);
    WriteRemembered(stage->remembered);
    WaitForLeftWork(stage);
    // What still runs would use what is about to go.
    if (IsPluginOpen(*stage) || stage->plugin.whyLost || IsWorking(*stage))
        TerminateProcess(GetCurrentProcess(), 0);
    PostQuitMessage(0);
}

// False: the session's end waits for the user, who wants to save.
LRESULT OnQueryEndSession(Stage* stage) {
    WaitForWork(stage);
    return MayReplaceDocument(stage) ? TRUE : FALSE;
}

// The window is not destroyed then.
void OnEndSession(Stage* stage, bool ends) {
    if (!ends) return;
    RememberWindow(stage);
    WriteRemembered(stage->remembered);
}

// Messages of the other threads. False: it is none.
bool OnStageMessage(Stage* stage, UINT message, WPARAM word, LPARAM pointer, LRESULT* answer) {
    *answer = 0;
    switch (message) {
        case kProgressNoted:
            ShowProgress(stage);
            return true;
        case kWorkDone:
            OnWorkDone(stage, word);
            return true;
        case kPluginEnded:
            OnPluginEnded(stage);
            return true;
        case kPluginBuilt:
            OnPluginBuilt(stage, reinterpret_cast<Step*>(pointer), word != 0);
            return true;
        case kPluginSource:
            OnPluginSource(stage, reinterpret_cast<OpenedSource*>(pointer));
            return true;
        case kWallStarts:
            OnWallStarts(stage);
            return true;
        case kWallOpens:
            OnWallOpens(stage, *reinterpret_cast<const EffectSettings*>(pointer));
            return true;
        case kWallTells:
            ShowStatus(stage, *reinterpret_cast<const std::string*>(pointer));
            return true;
        case kFilesDropped:
            OnFilesDropped(stage, reinterpret_cast<std::vector<std::string>*>(pointer));
            return true;
        case kMayReplaceSource:
            *answer = MayReplaceDocument(stage);
            return true;
    }
    return false;
}

LRESULT CALLBACK StageProcedure(HWND window, UINT message, WPARAM word, LPARAM pointer) {
    if (message == WM_NCCREATE) {
        const auto* creation = reinterpret_cast<CREATESTRUCTW*>(pointer);
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(creation->lpCreateParams));
    }
    Stage* stage = StageOf(window);
    LRESULT answer = 0;
    if (!stage) return DefWindowProcW(window, message, word, pointer);
    if (OnStageMessage(stage, message, word, pointer, &answer)) return answer;
    switch (message) {
        case WM_CREATE:
            OnCreate(stage, window);
            return 0;
        case WM_SIZE:
            PlaceControls(stage);
            return 0;
        case WM_GETMINMAXINFO:
            OnGetLeastSize(*stage, reinterpret_cast<MINMAXINFO*>(pointer));
            return 0;
        case WM_DPICHANGED:
            OnDpiChanged(stage, HIWORD(word), *reinterpret_cast<RECT*>(pointer));
            return 0;
        case WM_SETTINGCHANGE:
        case WM_SYSCOLORCHANGE:
        case WM_THEMECHANGED:
            RenewLooks(stage, message, word, pointer);
            break;
        case WM_WINDOWPOSCHANGING:
            OnPositionChanging(*stage, reinterpret_cast<WINDOWPOS*>(pointer));
            break;
        case WM_INITMENUPOPUP:
            UpdateMenu(*stage, reinterpret_cast<HMENU>(word));
            return 0;
        case WM_TIMER:
            if (word == kLookTimer)
                OnLookAtPlugin(stage);
            else
                OnPlayTimer(stage);
            return 0;
        case WM_COMMAND:
            OnCommand(stage, LOWORD(word), HIWORD(word));
            return 0;
        case WM_HSCROLL:
            OnSlider(stage);
            return 0;
        case WM_DRAWITEM:
            OnDrawItem(*stage, *reinterpret_cast<const DRAWITEMSTRUCT*>(pointer));
            return TRUE;
        case WM_DROPFILES:
            OnDropFiles(stage, reinterpret_cast<HDROP>(word));
            return 0;
        case WM_ACTIVATE:
            if (LOWORD(word) == WA_INACTIVE) ShowSourceAlone(stage, false);
            break;
        case WM_SETFOCUS:
            FocusPicture(*stage);
            return 0;
        case WM_QUERYENDSESSION:
            return OnQueryEndSession(stage);
        case WM_ENDSESSION:
            OnEndSession(stage, word != 0);
            return 0;
        case WM_CLOSE:
            OnClose(stage);
            return 0;
        case WM_DESTROY:
            OnDestroy(stage);
            return 0;
    }
    return DefWindowProcW(window, message, word, pointer);
}

bool RegisterStageClass() {
    WNDCLASSEXW stageClass = {};
    stageClass.cbSize = sizeof stageClass;
    stageClass.lpfnWndProc = StageProcedure;
    stageClass.hInstance = GetModuleHandleW(nullptr);
    stageClass.hIcon = LoadIconW(stageClass.hInstance, MAKEINTRESOURCEW(IDI_STAGE));
    stageClass.hCursor = LoadCursorA(nullptr, IDC_ARROW);
    stageClass.hbrBackground = reinterpret_cast<HBRUSH>(static_cast<INT_PTR>(COLOR_BTNFACE + 1));
    stageClass.lpszClassName = kClassName;
    return RegisterClassExW(&stageClass) != 0;
}

// Holding the key shows the source, wherever the focus is. True: the message was the key's.
bool OnSourceKey(Stage* stage, const MSG& message) {
    if (message.wParam != kSourceKey || (message.message != WM_KEYDOWN && message.message != WM_KEYUP))
        return false;
    if (GetKeyState(VK_CONTROL) < 0 || GetKeyState(VK_MENU) < 0) return false;
    if (message.hwnd != stage->window && !IsChild(stage->window, message.hwnd)) return false;
    ShowSourceAlone(stage, message.message == WM_KEYDOWN);
    return true;
}

void RunMessages(Stage* stage) {
    stage->accelerators = MakeAccelerators();
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) HandleMessage(stage, message);
    DestroyAcceleratorTable(stage->accelerators);
}

}  // namespace

void HandleMessage(Stage* stage, MSG message) {
    if (TakeWallKey(stage->wall.window, message) || OnSourceKey(stage, message) ||
        TranslateAcceleratorW(stage->window, stage->accelerators, &message) ||
        IsDialogMessageW(stage->window, &message))
        return;
    TranslateMessage(&message);
    DispatchMessageW(&message);
}

Stage* StageOf(HWND window) { return reinterpret_cast<Stage*>(GetWindowLongPtrW(window, GWLP_USERDATA)); }

void ShowMessage(const Stage& stage, HWND owner, const std::string& text, UINT icon) {
    MessageBoxW(owner ? owner : stage.window, Widen(text).c_str(), kStageTitle, MB_OK | icon);
}

int RunStageWindow(const std::vector<std::string>& paths) {
    Stage stage;
    stage.plugin.path = DefaultPluginPath();
    stage.remembered = ReadRemembered();
    TakeRememberedView(&stage);
    INITCOMMONCONTROLSEX classes = {sizeof classes, ICC_BAR_CLASSES | ICC_PROGRESS_CLASS};
    InitCommonControlsEx(&classes);
    if (!RegisterStageClass()) return 1;
    const HWND window =
        CreateWindowExW(0, kClassName, kStageTitle, WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, CW_USEDEFAULT,
                        CW_USEDEFAULT, 0, 0, nullptr, nullptr, GetModuleHandleW(nullptr), &stage);
    if (!window) return 1;
    PlaceWindow(&stage);
    const std::string leftSettings = PutBackLeftSettings();
    if (!leftSettings.empty()) ShowMessage(stage, window, leftSettings, MB_ICONWARNING);
    OpenFiles(&stage, paths, MadeFile::WaitsForPlugin);
    RunMessages(&stage);
    DeleteObject(stage.controls.font);
    DeleteObject(stage.controls.boldFont);
    if (stage.controls.canvasBitmap) DeleteObject(stage.controls.canvasBitmap);
    return 0;
}

}  // namespace kfx::stage
