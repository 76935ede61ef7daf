// SPDX-License-Identifier: MIT
// How long messages wait while a long animation is read, played and wiped. It measures times, so it is run by
// hand: --gtest_also_run_disabled_tests, with the file's path in KFX_LONG_ANIMATION.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <windows.h>
#include <psapi.h>

#include "tests/stage/stage_program.h"

namespace kfx::test {
namespace {

using namespace stage;

// Sends messages until the condition holds; the longest time that one has waited, in milliseconds.
template <typename Condition>
double LongestWait(HWND window, const Condition& condition) {
    LARGE_INTEGER frequency, before, after;
    QueryPerformanceFrequency(&frequency);
    double longest = 0;
    WaitFor([&] {
        QueryPerformanceCounter(&before);
        SendMessageA(window, WM_NULL, 0, 0);
        QueryPerformanceCounter(&after);
        const double ticks = static_cast<double>(after.QuadPart - before.QuadPart);
        longest = std::max(longest, 1000 * ticks / static_cast<double>(frequency.QuadPart));
        return condition();
    });
    return longest;
}

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

TEST_F(StageWindow, DISABLED_Messages_of_a_long_animation) {
    const char* path = std::getenv("KFX_LONG_ANIMATION");
    ASSERT_NE(path, nullptr);
    ASSERT_NO_FATAL_FAILURE(Open({path}));
    const double reading = LongestWait(window, [this] { return IsPossible(kPlay); });
    std::printf("reading: %.1f ms, %s\n", reading, MemoryText(this->stage.process).c_str());
    const DWORD end = GetTickCount() + 10000;
    int moves = 0;
    const double playing = LongestWait(window, [&] {
        PostMessageA(Control(kCanvas), WM_MOUSEMOVE, 0, MAKELPARAM(100 + moves++ % 500, 100));
        return GetTickCount() > end;
    });
    std::printf("playing: %.1f ms\n", playing);
    Run(kEffects);
    HWND plugin = nullptr;
    ASSERT_NO_FATAL_FAILURE(WaitForDialog("Kestrel FX #1", &plugin));
    const double handing =
        LongestWait(window, [plugin] { return TextOf(GetDlgItem(plugin, kPluginSize)) != ""; });
    std::printf("handing over: %.1f ms, %s\n", handing, MemoryText(this->stage.process).c_str());
    const HWND list = GetDlgItem(plugin, kPluginEffect);
    SendMessageA(list, CB_SELECTSTRING, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>("Solarize"));
    SendMessageA(plugin, WM_COMMAND, MAKEWPARAM(kPluginEffect, CBN_CLOSEUP), reinterpret_cast<LPARAM>(list));
    Press(plugin, kPluginBuild);
    const double building = LongestWait(window, [this] { return IsPossible(kUndo); });
    std::printf("building: %.1f ms, %s\n", building, MemoryText(this->stage.process).c_str());
    Run(kUndo);
    const double undoing = LongestWait(window, [this] { return IsPossible(kRedo); });
    std::printf("undo: %.1f ms\n", undoing);
    ASSERT_NO_FATAL_FAILURE(Close(false));
}

}  // namespace
}  // namespace kfx::test
