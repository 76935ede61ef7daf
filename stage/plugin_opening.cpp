// SPDX-License-Identifier: MIT
#include "stage/plugin_opening.h"

#include <new>

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
constexpr UINT_PTR kLookTimer = 1;
constexpr UINT kLookMilliseconds = 30;
constexpr char kDialogClass[] = "#32770";

// The opening whose thread runs, for functions that the system calls without a context.
PluginOpening* running = nullptr;

bool IsPluginWindow(HWND window) {
    return GetDlgItem(window, kEffectList) && GetDlgItem(window, kPreviewArea);
}

// The message about a frame that the user has stopped says nothing new.
bool IsMessageAboutStop(HWND window) {
    return running->refusing && !IsPluginWindow(window) && ControlClass(window) == kDialogClass;
}

// Whether a dialog is being made for the owner: the plug-in's window or a message instead of it. Others, such
// as the panels of its effects, belong to the window.
bool IsOwnersDialog(HWND window, LPARAM creation) {
    const auto* made = reinterpret_cast<const CBT_CREATEWNDW*>(creation)->lpcs;
    return made->hwndParent == running->owner && ControlClass(window) == kDialogClass;
}

// The window has no controls yet when it is made; the owner looks at it once messages are answered.
LRESULT CALLBACK WatchWindows(int code, WPARAM word, LPARAM pointer) {
    const auto window = reinterpret_cast<HWND>(word);
    if (code == HCBT_CREATEWND && running && !running->window && IsOwnersDialog(window, pointer))
        PostMessageW(running->owner, kPluginShown, word, 0);
    if (code == HCBT_ACTIVATE && running && IsMessageAboutStop(window))
        PostMessageW(window, WM_COMMAND, IDOK, 0);
    return CallNextHookEx(nullptr, code, word, pointer);
}

// The plug-in's controls can be used once its preview is visible.
void OnPluginShown(HWND plugin) {
    KillTimer(running->owner, kLookTimer);
    if (running->window || !IsWindow(plugin)) return;
    if (!IsPluginWindow(plugin) || !IsWindowVisible(GetDlgItem(plugin, kPreviewArea))) {
        SetWindowLongPtrW(running->owner, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(plugin));
        SetTimer(running->owner, kLookTimer, kLookMilliseconds, nullptr);
        return;
    }
    running->window = plugin;
    ApplyPluginSettings(plugin, running->settings);
    AcceptDrops(plugin, running->stageWindow);
    // The source is there already: the user need not press "Select...".
    if (running->session.offerSource && running->session.animationsOpened == 0) {
        PostMessageA(plugin, WM_COMMAND, MAKEWPARAM(kSelectButton, BN_CLICKED),
                     reinterpret_cast<LPARAM>(GetDlgItem(plugin, kSelectButton)));
    }
}

LRESULT CALLBACK OwnerProcedure(HWND window, UINT message, WPARAM word, LPARAM pointer) {
    switch (message) {
        case kPluginShown:
            OnPluginShown(reinterpret_cast<HWND>(word));
            return 0;
        case WM_TIMER:
            OnPluginShown(reinterpret_cast<HWND>(GetWindowLongPtrW(window, GWLP_USERDATA)));
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

bool CopySource(PluginOpening* opening) {
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
    const HHOOK hook = SetWindowsHookExW(WH_CBT, WatchWindows, nullptr, GetCurrentThreadId());
    RunGuarded(opening, [](PluginOpening* guarded) {
        guarded->library->doBuild(guarded->owner, &guarded->session.context);
    });
    if (hook) UnhookWindowsHookEx(hook);
    if (opening->owner) DestroyWindow(opening->owner);
    if (opening->taker) DestroyWindow(opening->taker);
}

}  // namespace

DWORD WINAPI RunPluginThread(void* parameter) {
    auto* opening = static_cast<PluginOpening*>(parameter);
    running = opening;
    TakeUnawareScale();
    if (CopySource(opening)) ShowPlugin(opening);
    opening->window = nullptr;
    opening->source = {};
    running = nullptr;
    PostMessageW(opening->stageWindow, kPluginEnded, 0, 0);
    return 0;
}

}  // namespace kfx::stage
