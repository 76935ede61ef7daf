// SPDX-License-Identifier: MIT
// How long messages wait while a long animation is read, played and wiped. It measures times, so it is run by
// hand: --gtest_also_run_disabled_tests, with the file's path in KFX_LONG_ANIMATION.
#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

#include <windows.h>
#include <psapi.h>

#include "tests/stage/stage_program.h"

namespace kfx::test {
namespace {

using namespace stage;

// How long a message that does nothing waits, in milliseconds.
double WaitOf(HWND window) {
    LARGE_INTEGER frequency, before, after;
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&before);
    SendMessageA(window, WM_NULL, 0, 0);
    QueryPerformanceCounter(&after);
    const double ticks = static_cast<double>(after.QuadPart - before.QuadPart);
    return 1000 * ticks / static_cast<double>(frequency.QuadPart);
}

// What the machine alone makes messages wait: a window of this program, on a thread that does nothing else,
// is sent the same messages by another thread all the time.
struct IdleWindow {
    std::atomic<HWND> window = nullptr;
    std::atomic<bool> ends = false;
    std::atomic<double> longest = 0;  // milliseconds, since it was last taken
    std::thread owner;
    std::thread sender;

    IdleWindow() {
        owner = std::thread([this] {
            window = CreateWindowA("STATIC", "", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
            MSG message;
            while (GetMessageA(&message, nullptr, 0, 0) > 0) DispatchMessageA(&message);
        });
        sender = std::thread([this] {
            while (!ends) {
                if (window) longest = std::max<double>(longest, WaitOf(window));
                Sleep(5);
            }
        });
    }
    ~IdleWindow() {
        ends = true;
        sender.join();
        PostThreadMessageA(GetWindowThreadProcessId(window, nullptr), WM_QUIT, 0, 0);
        owner.join();
    }
    IdleWindow(const IdleWindow&) = delete;
    IdleWindow& operator=(const IdleWindow&) = delete;
};

// "1.23 GB now, 2.34 GB at most".
std::string MemoryText(HANDLE process) {
    constexpr double kGigabyte = 1e9;
    PROCESS_MEMORY_COUNTERS memory = {};
    memory.cb = sizeof memory;
    GetProcessMemoryInfo(process, &memory, sizeof memory);
    char text[80];
    std::snprintf(text, sizeof text, "%.2f GB now, %.2f GB at most",
                  static_cast<double>(memory.WorkingSetSize) / kGigabyte,
                  static_cast<double>(memory.PeakWorkingSetSize) / kGigabyte);
    return text;
}

// Sends messages until the condition holds and prints the longest time that one has waited, and one of the
// idle window beside it.
template <typename Condition>
void PrintLongestWait(const char* what, IdleWindow* idle, HWND window, HANDLE process,
                      const Condition& condition) {
    double longest = 0;
    idle->longest = 0;
    WaitFor([&] {
        longest = std::max(longest, WaitOf(window));
        return condition();
    });
    std::printf("%s: %.1f ms (idle window %.1f ms), %s\n", what, longest, idle->longest.load(),
                MemoryText(process).c_str());
}

TEST_F(StageWindow, DISABLED_Messages_of_a_long_animation) {
    const char* path = std::getenv("KFX_LONG_ANIMATION");
    ASSERT_NE(path, nullptr);
    ASSERT_NO_FATAL_FAILURE(Open({path}));
    IdleWindow idle;
    const HANDLE process = this->stage.process;
    PrintLongestWait("reading", &idle, window, process, [this] { return IsPossible(kPlay); });
    const DWORD end = GetTickCount() + 10000;
    int moves = 0;
    PrintLongestWait("playing", &idle, window, process, [&] {
        PostMessageA(Control(kCanvas), WM_MOUSEMOVE, 0, MAKELPARAM(100 + moves++ % 500, 100));
        return GetTickCount() > end;
    });
    Run(kEffects);
    HWND plugin = nullptr;
    ASSERT_NO_FATAL_FAILURE(WaitForDialog("Kestrel FX #1", &plugin));
    PrintLongestWait("handing over", &idle, window, process,
                     [plugin] { return TextOf(GetDlgItem(plugin, kPluginSize)) != ""; });
    const HWND list = GetDlgItem(plugin, kPluginEffect);
    SendMessageA(list, CB_SELECTSTRING, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>("Solarize"));
    SendMessageA(plugin, WM_COMMAND, MAKEWPARAM(kPluginEffect, CBN_CLOSEUP), reinterpret_cast<LPARAM>(list));
    Press(plugin, kPluginBuild);
    PrintLongestWait("building", &idle, window, process, [this] { return IsPossible(kUndo); });
    Run(kUndo);
    PrintLongestWait("undo", &idle, window, process, [this] { return IsPossible(kRedo); });
    ASSERT_NO_FATAL_FAILURE(Close(false));
}

}  // namespace
}  // namespace kfx::test
