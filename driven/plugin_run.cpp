// SPDX-License-Identifier: MIT
#include "driven/plugin_run.h"

#include <algorithm>

#include <windows.h>
#include <commctrl.h>

#include "commands/text_windows.h"

namespace kfx::driven {

using namespace commands;

namespace {

constexpr int kOpeningSeconds = 60;
constexpr int kClosingSeconds = 20;
constexpr int kMessageText = 101;  // the text in the plug-in's message boxes

bool Fail(PluginRun* run, ExitCode code, const std::string& sentence) {
    run->failure = {code, sentence};
    return false;
}

bool GiveUp(PluginRun* run, int seconds) {
    return Fail(run, kExitTimeout,
                "the plug-in has stopped answering (" + std::to_string(seconds) + " s without a request).");
}

// Beyond every screen.
constexpr int kOffScreen = -32000;

// Wherever a window wants to go, it goes off the screen, and it stays behind the user's.
LRESULT CALLBACK KeepOffScreen(HWND window, UINT message, WPARAM word, LPARAM pointer, UINT_PTR, DWORD_PTR) {
    const LRESULT answer = DefSubclassProc(window, message, word, pointer);
    if (message == WM_WINDOWPOSCHANGING) {
        auto* position = reinterpret_cast<WINDOWPOS*>(pointer);
        position->x = position->y = kOffScreen;
        position->flags = (position->flags & ~static_cast<UINT>(SWP_NOMOVE)) | SWP_NOACTIVATE;
    }
    return answer;
}

// Makes each window of a driven plug-in fully transparent and moves it away before it appears, and keeps the
// keyboard from it. It must stay visible to the system, because the plug-in ignores the controls of a hidden
// window.
LRESULT CALLBACK HideNewWindows(int code, WPARAM word, LPARAM pointer) {
    if (code == HCBT_ACTIVATE) return 1;
    if (code == HCBT_CREATEWND) {
        const auto window = reinterpret_cast<HWND>(word);
        auto* creation = reinterpret_cast<CBT_CREATEWNDA*>(pointer)->lpcs;
        if (!(creation->style & WS_CHILD)) {
            const LONG_PTR style = GetWindowLongPtrA(window, GWL_EXSTYLE);
            SetWindowLongPtrA(window, GWL_EXSTYLE,
                              style | WS_EX_LAYERED | WS_EX_TOOLWINDOW | WS_EX_NOACTIVATE);
            SetLayeredWindowAttributes(window, 0, 0, LWA_ALPHA);
            creation->x = creation->y = kOffScreen;
            SetWindowSubclass(window, KeepOffScreen, 0, 0);
        }
    }
    return CallNextHookEx(nullptr, code, word, pointer);
}

// The run whose plug-in's thread tells of changes: the hook and the host's function get no context, and one
// plug-in is driven at a time.
const PluginRun* telling = nullptr;
HostCallback answer = nullptr;

// What the conditions below look at has changed once these messages have been handled.
LRESULT CALLBACK TellOfMessage(int code, WPARAM word, LPARAM pointer) {
    const auto* handled = reinterpret_cast<const CWPRETSTRUCT*>(pointer);
    switch (code == HC_ACTION ? handled->message : WM_NULL) {
        case WM_WINDOWPOSCHANGED:
        case WM_ENABLE:
        case WM_SETTEXT:
        case WM_INITDIALOG:
        case WM_NCDESTROY:
            SetEvent(telling->changed);
    }
    return CallNextHookEx(nullptr, code, word, pointer);
}

uint64_t AnswerAndTell(uint64_t context, uint32_t request, uint64_t word, uint64_t pointer) {
    const uint64_t result = answer(context, request, word, pointer);
    SetEvent(telling->changed);
    return result;
}

bool TellOfChanges(PluginRun* run) {
    run->changed = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    if (!run->changed) return false;
    SetChangeEvent(run->changed);
    telling = run;
    answer = run->session->context.callback;
    run->session->context.callback = AnswerAndTell;
    return true;
}

// After the thread has ended.
void TellNoMore(PluginRun* run) {
    SetChangeEvent(nullptr);
    if (run->changed) CloseHandle(run->changed);
    run->changed = nullptr;
}

DWORD WINAPI RunPlugin(void* parameter) {
    auto* run = static_cast<PluginRun*>(parameter);
    const HHOOK teller = SetWindowsHookExA(WH_CALLWNDPROCRET, TellOfMessage, nullptr, GetCurrentThreadId());
    const HHOOK hook =
        run->showWindow ? nullptr : SetWindowsHookExA(WH_CBT, HideNewWindows, nullptr, GetCurrentThreadId());
    // An owner keeps the plug-in's window off the task bar and gives it something to repaint.
    const HWND owner = CreateWindowExA(WS_EX_TOOLWINDOW, "Static", "Kestrel", WS_POPUP, 0, 0, 0, 0, nullptr,
                                       nullptr, GetModuleHandleA(nullptr), nullptr);
    const uint64_t result = run->library->doBuild(owner, &run->session->context);
    if (owner) DestroyWindow(owner);
    if (hook) UnhookWindowsHookEx(hook);
    if (teller) UnhookWindowsHookEx(teller);
    return static_cast<DWORD>(result);
}

struct FoundWindows {
    HWND plugin = nullptr;
    HWND message = nullptr;
};

BOOL CALLBACK SortWindow(HWND window, LPARAM pointer) {
    auto* found = reinterpret_cast<FoundWindows*>(pointer);
    if (IsPluginWindow(window)) {
        found->plugin = window;
    } else if (IsWindowVisible(window) && ControlClass(window) == "#32770") {
        found->message = window;
    }
    return TRUE;
}

FoundWindows FindWindows(const PluginRun& run) {
    FoundWindows found;
    EnumThreadWindows(run.threadId, SortWindow, reinterpret_cast<LPARAM>(&found));
    return found;
}

// The longest text in a box: its message.
std::string MessageOf(HWND box) {
    std::string message = ControlText(GetDlgItem(box, kMessageText));
    for (HWND child = GetWindow(box, GW_CHILD); child && message.empty();
         child = GetWindow(child, GW_HWNDNEXT)) {
        if (ControlClass(child) == "Static") message = ControlText(child);
    }
    for (char& c : message) {
        if (c == '\n' || c == '\r') c = ' ';
    }
    return FromPluginText(message);
}

// Presses the button that changes least: Ok where there is one, else No.
void AnswerMessage(PluginRun* run, HWND box) {
    run->messages.push_back(MessageOf(box));
    for (const int button : {IDOK, IDNO, IDCANCEL}) {
        if (const HWND control = GetDlgItem(box, button)) {
            Notify(box, control, BN_CLICKED);
            return;
        }
    }
    PostMessageA(box, WM_CLOSE, 0, 0);
}

bool ThreadEnded(const PluginRun& run) { return WaitForSingleObject(run.thread, 0) == WAIT_OBJECT_0; }

// Waits until `done` holds. Message boxes are answered on the way; the time limit starts anew with each
// request of the plug-in.
template <typename Condition>
bool WaitUntil(PluginRun* run, int seconds, Condition done) {
    uint64_t answered = run->session->requestsAnswered;
    ULONGLONG since = GetTickCount64();
    for (;;) {
        if (const HWND box = FindWindows(*run).message) AnswerMessage(run, box);
        if (done()) return true;
        if (ThreadEnded(*run)) return done();
        if (run->onWait) run->onWait(*run->session);
        const uint64_t now = run->session->requestsAnswered;
        if (now != answered) {
            answered = now;
            since = GetTickCount64();
        }
        if (GetTickCount64() - since > static_cast<ULONGLONG>(seconds) * 1000) {
            return GiveUp(run, seconds);
        }
        WaitForChange(run->thread);
    }
}

// False with the message as the error when the plug-in has shown one.
bool NoMessage(PluginRun* run) {
    if (!StillAnswers(run)) return false;
    if (run->messages.empty()) return true;
    return Fail(run, kExitEngine, "the plug-in says: " + run->messages.front());
}

bool Ready(const PluginRun& run) {
    const HWND window = FindWindows(run).plugin;
    return window && (GetWindowLongA(GetDlgItem(window, kPreviewArea), GWL_STYLE) & WS_VISIBLE) &&
           IsWindowVisible(window);
}

bool TakeBuilt(PluginRun* run, int tasksBefore) {
    if (!NoMessage(run)) return false;
    if (run->session->tasksClosed == tasksBefore || !run->session->built.complete) {
        return Fail(run, kExitEngine, "the plug-in has built nothing.");
    }
    return true;
}

// A process's first window sets up the window system, under Wine with locks that two threads may take in
// opposite order. So this happens before there is a second thread.
void SetUpWindows() {
    const HWND window = CreateWindowExA(0, "Static", "", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                        GetModuleHandleA(nullptr), nullptr);
    if (window) DestroyWindow(window);
}

}  // namespace

bool StillAnswers(PluginRun* run) { return !HasStoppedAnswering() || GiveUp(run, AnswerLimit()); }

bool OpenPluginWindow(PluginRun* run) {
    SetAnswerLimit(run->timeoutSeconds);
    SetUpWindows();
    if (TellOfChanges(run)) run->thread = CreateThread(nullptr, 0, RunPlugin, run, 0, &run->threadId);
    if (!run->thread)
        return Fail(run, kExitEngine, "no thread could be started: " + SystemErrorText(GetLastError()) + ".");
    const int seconds = std::min(kOpeningSeconds, run->timeoutSeconds);
    if (!WaitUntil(run, seconds, [run] { return Ready(*run); })) {
        if (!run->failure.error.empty() || !NoMessage(run)) return false;
        return Fail(run, kExitEngine, "the plug-in's window has closed itself.");
    }
    run->window = FindWindows(*run).plugin;
    // A preview that nobody sees need not be rendered.
    if (!run->showWindow) ShowWindow(GetDlgItem(run->window, kPreviewArea), SW_HIDE);
    return NoMessage(run);
}

bool ChooseRow(PluginRun* run, int control, int row) {
    const HWND list = GetDlgItem(run->window, control);
    Send(list, CB_SETCURSEL, static_cast<WPARAM>(row));
    Notify(run->window, list, CBN_CLOSEUP);
    if (Send(list, CB_GETCURSEL) != row)
        return Fail(run, kExitEngine, "the plug-in does not take a choice from a list.");
    return NoMessage(run);
}

bool SetOption(PluginRun* run, const std::string& name, bool on) {
    const HWND box = FindOption(run->window, name);
    if (box && (Send(box, BM_GETCHECK) == BST_CHECKED) == on) return true;
    if (!box || !IsWindowEnabled(box)) {
        return Fail(run, kExitEngine, "the plug-in does not offer \"" + name + "\" here.");
    }
    Send(box, BM_SETCHECK, on ? BST_CHECKED : BST_UNCHECKED);
    Notify(run->window, box, BN_CLICKED);
    return NoMessage(run);
}

bool SelectSource(PluginRun* run) {
    const int before = run->session->animationsOpened;
    const int refused = run->session->animationsRefused;
    PressButton(run->window, kSelectButton);
    const HWND build = GetDlgItem(run->window, kBuildButton);
    if (!WaitUntil(run, run->timeoutSeconds, [run, before, refused, build] {
            return !run->messages.empty() || run->session->animationsRefused > refused ||
                   (run->session->animationsOpened > before && IsWindowEnabled(build));
        })) {
        return run->failure.error.empty() ? Fail(run, kExitEngine, "the plug-in's window has closed itself.")
                                          : false;
    }
    if (run->session->animationsRefused > refused)
        return Fail(run, kExitEngine, "there is not enough memory for this animation.");
    // The command's handler has ended when the window answers again.
    Send(run->window, WM_NULL);
    return NoMessage(run);
}

bool PressTest(PluginRun* run) {
    const int before = run->session->tasksClosed;
    PressButton(run->window, kTestButton);
    if (!WaitUntil(run, run->timeoutSeconds,
                   [run, before] { return !run->messages.empty() || run->session->tasksClosed > before; })) {
        return run->failure.error.empty() ? Fail(run, kExitEngine, "the plug-in's window has closed itself.")
                                          : false;
    }
    Send(run->window, WM_NULL);
    return TakeBuilt(run, before);
}

bool PressBuild(PluginRun* run) {
    const int before = run->session->tasksClosed;
    PressButton(run->window, kBuildButton);
    if (!WaitUntil(run, run->timeoutSeconds, [run] { return ThreadEnded(*run); })) return false;
    return TakeBuilt(run, before);
}

bool ClosePluginWindow(PluginRun* run) {
    if (!run->thread) return true;
    // It has already been waited for.
    StillAnswers(run);
    if (run->failure.exitCode == kExitTimeout && !ThreadEnded(*run)) return false;
    const Failure failure = run->failure;
    if (!ThreadEnded(*run) && run->window) PressButton(run->window, kCancelButton);
    const int seconds = std::min(kClosingSeconds, run->timeoutSeconds);
    const bool ended = WaitUntil(run, seconds, [run] { return ThreadEnded(*run); });
    if (!failure.error.empty()) run->failure = failure;
    if (ended) {
        CloseHandle(run->thread);
        run->thread = nullptr;
        TellNoMore(run);
    }
    return ended;
}

}  // namespace kfx::driven
