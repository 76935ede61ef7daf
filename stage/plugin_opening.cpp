// SPDX-License-Identifier: MIT
#include "stage/plugin_opening.h"

#include <new>
#include <utility>

#include "commands/text_windows.h"
#include "driven/plugin_controls.h"
#include "stage/plugin_guard.h"
#include "stage/plugin_source.h"
#include "stage/stage_messages.h"

namespace kfx::stage {

using namespace commands;
using namespace driven;

namespace {

constexpr wchar_t kOwnerClass[] = L"KestrelPluginOwner";
constexpr UINT kPluginShown = WM_APP;
constexpr char kDialogClass[] = "#32770";

// The opening whose thread runs, for functions that the system calls without a context.
PluginOpening* running = nullptr;

// What a plug-in that has been given up still shows concerns nobody.
bool MayNotShow(HWND window) { return running->abandoned && ControlClass(window) == kDialogClass; }

// The plug-in shows a message only when nothing is being built, or when its build has failed.
void OnMessageShown(HWND message) {
    // A frame that the user has stopped says nothing new.
    if (running->refusing)
        PostMessageW(message, WM_COMMAND, IDOK, 0);
    else
        EndBuild(&running->progress, running->stageWindow);
}

// Whether a dialog is being made for the owner: the plug-in's window or a message instead of it. Others, such
// as the panels of its effects, belong to the window.
bool IsOwnersDialog(HWND window, LPARAM creation) {
    const auto* made = reinterpret_cast<const CBT_CREATEWNDW*>(creation)->lpcs;
    return made->hwndParent == running->owner && ControlClass(window) == kDialogClass;
}

LRESULT CALLBACK WatchWindows(int code, WPARAM word, LPARAM pointer) {
    const auto window = reinterpret_cast<HWND>(word);
    if (code == HCBT_CREATEWND && running && MayNotShow(window)) return 1;
    if (code == HCBT_CREATEWND && running && !running->window && IsOwnersDialog(window, pointer))
        running->dialog = window;
    if (code == HCBT_ACTIVATE && running && !IsPluginWindow(window) && ControlClass(window) == kDialogClass)
        OnMessageShown(window);
    return CallNextHookEx(nullptr, code, word, pointer);
}

// The plug-in's controls can be used once its preview is visible.
bool CanBeUsed(HWND dialog) {
    return IsWindow(dialog) && IsPluginWindow(dialog) && IsWindowVisible(GetDlgItem(dialog, kPreviewArea));
}

// The system tells a window last that it is shown. The owner takes it up once messages are answered.
LRESULT CALLBACK WatchShowing(int code, WPARAM word, LPARAM pointer) {
    const auto* told = reinterpret_cast<const CWPRETSTRUCT*>(pointer);
    if (code == HC_ACTION && running && !running->window && told->message == WM_WINDOWPOSCHANGED &&
        CanBeUsed(running->dialog))
        PostMessageW(running->owner, kPluginShown, 0, 0);
    return CallNextHookEx(nullptr, code, word, pointer);
}

HHOOK WatchThread(PluginOpening* opening, int kind, HOOKPROC watcher) {
    const HHOOK hook = SetWindowsHookExW(kind, watcher, nullptr, GetCurrentThreadId());
    if (!hook)
        opening->error = "The plug-in's window cannot be watched: " + SystemErrorText(GetLastError()) + ".";
    return hook;
}

void StopWatching(HHOOK* hook) {
    if (const HHOOK set = std::exchange(*hook, nullptr)) UnhookWindowsHookEx(set);
}

// Without both hooks nobody would know of the plug-in's window, and when it can be used.
bool WatchPlugin(PluginOpening* opening) {
    opening->makeHook = WatchThread(opening, WH_CBT, WatchWindows);
    if (!opening->makeHook) return false;
    opening->showHook = WatchThread(opening, WH_CALLWNDPROCRET, WatchShowing);
    return opening->showHook != nullptr;
}

// It may have been told of more than once.
void OnPluginShown() {
    const HWND plugin = running->dialog;
    if (running->window || !CanBeUsed(plugin)) return;
    StopWatching(&running->showHook);
    running->window = plugin;
    ApplyPluginSettings(plugin, running->settings);
    AcceptDrops(plugin, running->stageWindow);
    // The source is there already: the user need not press "Select...".
    if (running->session.offerSource && running->session.animationsOpened == 0) {
        PressButton(plugin, kSelectButton);
    }
}

// One that was given up and takes messages again is to end.
void OnAreYouThere() {
    running->answered = true;
    if (running->abandoned && running->window) PressButton(running->window, kCancelButton);
}

LRESULT CALLBACK OwnerProcedure(HWND window, UINT message, WPARAM word, LPARAM pointer) {
    switch (message) {
        case kAreYouThere:
            OnAreYouThere();
            return 0;
        case kPluginShown:
            OnPluginShown();
            return 0;
    }
    return DefWindowProcW(window, message, word, pointer);
}

HWND MakeOwner() {
    WNDCLASSW ownerClass = {};
    ownerClass.lpfnWndProc = OwnerProcedure;
    ownerClass.hInstance = GetModuleHandleW(nullptr);
    ownerClass.lpszClassName = kOwnerClass;
    RegisterClassW(&ownerClass);
    return CreateWindowExW(WS_EX_TOOLWINDOW, kOwnerClass, L"Kestrel Stage", WS_POPUP, 0, 0, 0, 0, nullptr,
                           nullptr, ownerClass.hInstance, nullptr);
}

// The plug-in's window knows nothing of screens with more pixels: the system enlarges it, and draws its text
// sharp where it can.
void TakeUnawareScale() {
    using SetContext = HANDLE(WINAPI*)(HANDLE);
    const auto address = reinterpret_cast<void*>(
        GetProcAddress(GetModuleHandleW(L"user32.dll"), "SetThreadDpiAwarenessContext"));
    if (!address) return;
    const auto setContext = reinterpret_cast<SetContext>(address);
    constexpr INT_PTR kUnawareGdiScaled = -5, kUnaware = -1;
    if (!setContext(reinterpret_cast<HANDLE>(kUnawareGdiScaled)))
        setContext(reinterpret_cast<HANDLE>(kUnaware));
}

bool LoadOnce(PluginOpening* opening) {
    driven::PluginLibrary* library = opening->library;
    return library->doBuild || LoadPlugin(library->path, nullptr, library, &opening->error);
}

bool CopySource(PluginOpening* opening) {
    const InHost copying(opening);
    try {
        if (!opening->film) return true;
        opening->source = AnimationOf(*opening->film);
        opening->source.comment = opening->originalComment;
        return true;
    } catch (const std::bad_alloc&) {
        opening->error = "There is not enough memory to open the plug-in with this animation.";
        return false;
    }
}

void ShowPlugin(PluginOpening* opening) {
    opening->owner = MakeOwner();
    MakeSourceTaker(opening);
    RunGuarded(opening, [](PluginOpening* guarded) {
        if (WatchPlugin(guarded) && LoadOnce(guarded) && CopySource(guarded))
            guarded->library->doBuild(guarded->owner, &guarded->session.context);
    });
    StopWatching(&opening->showHook);
    StopWatching(&opening->makeHook);
    if (const HWND owner = opening->owner.exchange(nullptr)) DestroyWindow(owner);
    if (const HWND taker = opening->taker.exchange(nullptr)) DestroyWindow(taker);
}

}  // namespace

DWORD WINAPI RunPluginThread(void* parameter) {
    auto* opening = static_cast<PluginOpening*>(parameter);
    running = opening;
    TakeUnawareScale();
    ShowPlugin(opening);
    opening->window = nullptr;
    opening->source = {};
    running = nullptr;
    PostMessageW(opening->stageWindow, kPluginEnded, 0, 0);
    return 0;
}

}  // namespace kfx::stage
