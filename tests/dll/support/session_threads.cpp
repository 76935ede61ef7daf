// SPDX-License-Identifier: MIT
#include <windows.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <utility>

#include "tests/dll/support/session_state.h"
#include "tests/support/wait_for.h"

namespace kfx::test {
namespace {

using namespace std::chrono_literals;

constexpr auto kLongestSilence = 2 * kLongestWait;  // longer than a test waits before it fails
constexpr auto kLookInterval = 6ms;
constexpr WPARAM kPreview = 25;
constexpr int kMessageText = 101;
constexpr int kFirstButtons[] = {IDOK, IDYES};

PluginSession::State* current = nullptr;  // of the window's thread: hooks have no argument for it

std::string OneLine(const std::string& text) {
    std::string line;
    for (const char c : text) line += c == '\n' ? "\\n" : std::string(1, c);
    return line;
}

WNDPROC dialogProcedure = nullptr;  // the plug-in window's own, while it is watched
HHOOK windowMade = nullptr;         // until the plug-in's window has been made

// Notes the marker and each drawing of the preview. Hooks would see them, too, but under Wine each message of
// the thread would then need an answer of another process, and opening a window takes thousands of messages.
LRESULT CALLBACK WatchingProcedure(HWND window, UINT message, WPARAM word, LPARAM data) {
    if (message == kMarker && current) {
        const std::lock_guard<std::mutex> lock(current->mutex);
        current->markerSeen = true;
    }
    if (message == WM_DRAWITEM && word == kPreview && current) {
        const std::lock_guard<std::mutex> lock(current->standIns->mutex);
        current->standIns->events.push_back("preview");
    }
    return CallWindowProcA(dialogProcedure, window, message, word, data);
}

// The thread's first dialog is the plug-in's window, or a message that says why there is none.
LRESULT CALLBACK OnWindowMade(int code, WPARAM word, LPARAM data) {
    const HHOOK hook = windowMade;
    const HWND made = reinterpret_cast<HWND>(word);
    char className[16] = "";
    if (code == HCBT_CREATEWND && GetClassNameA(made, className, sizeof className) &&
        std::strcmp(className, "#32770") == 0) {
        dialogProcedure = reinterpret_cast<WNDPROC>(
            SetWindowLongPtrA(made, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(WatchingProcedure)));
        UnhookWindowsHookEx(std::exchange(windowMade, nullptr));
    }
    return CallNextHookEx(hook, code, word, data);
}

// The host's window. The modal window tells it whenever its queue is empty.
LRESULT CALLBACK ParentProcedure(HWND window, UINT message, WPARAM word, LPARAM data) {
    if (message == WM_ENTERIDLE && word == MSGF_DIALOGBOX && current) {
        const std::lock_guard<std::mutex> lock(current->mutex);
        current->window = reinterpret_cast<HWND>(data);
        if (current->markerSeen) {
            current->markerSeen = false;
            current->idle = true;
            ++current->stepsDone;
        }
        current->changed.notify_all();
    }
    return DefWindowProcA(window, message, word, data);
}

HWND MakeParent() {
    WNDCLASSA windowClass = {};
    windowClass.lpfnWndProc = ParentProcedure;
    windowClass.lpszClassName = "FakeHostEditor";
    RegisterClassA(&windowClass);
    return CreateWindowExA(0, windowClass.lpszClassName, "Host", WS_POPUP | WS_VISIBLE, 0, 0, 40, 40, nullptr,
                           nullptr, nullptr, nullptr);
}

void HoldShift() {
    BYTE keys[256] = {};
    keys[VK_SHIFT] = 0x80;
    SetKeyboardState(keys);
}

}  // namespace

void RunWindow(PluginSession::State* state) {
    current = state;
    const HWND parent = MakeParent();
    windowMade = SetWindowsHookExA(WH_CBT, OnWindowMade, nullptr, GetCurrentThreadId());
    if (state->options.shiftHeld) HoldShift();
    state->windowThread = GetCurrentThreadId();
    const FloatingPointControls controlsBefore = ReadControls();
    if (state->options.controls.x87) SetControls(state->options.controls);
    const uint64_t result = EntryOf(state->library)(parent, &state->host.context);
    const FloatingPointControls controlsAfter = ReadControls();
    SetControls(controlsBefore);
    if (windowMade) UnhookWindowsHookEx(std::exchange(windowMade, nullptr));
    {
        const std::lock_guard<std::mutex> lock(state->mutex);
        state->result = result;
        state->controlsAfter = controlsAfter;
        state->closed = true;
        state->window = nullptr;
        state->changed.notify_all();
    }
    DestroyWindow(parent);
    current = nullptr;
}

namespace {

struct BoxSearch {
    std::wstring caption;
    HWND found;
};

}  // namespace

HWND FindBox(DWORD thread, const char* caption) {
    BoxSearch search = {std::wstring(caption, caption + std::strlen(caption)), nullptr};
    if (!thread) return nullptr;
    EnumThreadWindows(
        thread,
        [](HWND window, LPARAM data) -> BOOL {
            auto* wanted = reinterpret_cast<BoxSearch*>(data);
            if (!IsWindowVisible(window)) return TRUE;
            // The caption that the system keeps: asking the window itself would need its thread each time.
            wchar_t text[100] = L"";
            InternalGetWindowText(window, text, static_cast<int>(std::size(text)));
            if (wanted->caption == text) wanted->found = window;
            return wanted->found == nullptr;
        },
        reinterpret_cast<LPARAM>(&search));
    return search.found;
}

namespace {

// Presses the first button; the box goes when its thread comes to it.
void AnswerMessageBox(PluginSession::State* state, HWND box) {
    char text[2048] = "";
    GetDlgItemTextA(box, kMessageText, text, sizeof text);
    {
        const std::lock_guard<std::mutex> lock(state->mutex);
        state->messages.push_back(text);
    }
    state->host.AddLine("MSG \"" + OneLine(text) + "\"");
    for (const int button : kFirstButtons)
        if (GetDlgItem(box, button)) PostMessageA(box, WM_COMMAND, static_cast<WPARAM>(button), 0);
    ++state->stepsDone;
}

}  // namespace

void Watch(PluginSession::State* state) {
    HWND answered = nullptr;
    size_t signs = 0;
    auto since = std::chrono::steady_clock::now();
    while (!state->ending) {
        if (answered && !IsWindow(answered)) answered = nullptr;
        const HWND box = state->messagesHeld ? nullptr : FindBox(state->windowThread, "Message");
        if (box && box != answered) AnswerMessageBox(state, answered = box);
        const size_t signsNow = state->stepsDone + state->host.CountAnswers();
        if (signsNow != signs) since = std::chrono::steady_clock::now();
        signs = signsNow;
        if (std::chrono::steady_clock::now() - since > kLongestSilence) {
            std::fprintf(stderr, "The plug-in's window hangs. What the host saw:\n");
            for (const std::string& line : state->host.Transcript())
                std::fprintf(stderr, "  %s\n", line.c_str());
            std::fflush(stderr);
            TerminateProcess(GetCurrentProcess(), 3);
        }
        std::this_thread::sleep_for(kLookInterval);
    }
}

}  // namespace kfx::test
