// SPDX-License-Identifier: MIT
#include "commands/times.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>

namespace kfx::commands {
namespace {

constexpr size_t kMostRuns = 6;  // that are told one by one

// Frames in a row with one time.
struct Run {
    size_t frames;
    int milliseconds;
};

std::vector<Run> RunsOf(const Animation& animation) {
    std::vector<Run> runs;
    for (const Frame& frame : animation.frames) {
        const int time = MillisecondsOf(frame);
        if (runs.empty() || runs.back().milliseconds != time) runs.push_back({0, time});
        ++runs.back().frames;
    }
    return runs;
}

}  // namespace

int64_t DurationOf(const Animation& animation) {
    int64_t sum = 0;
    for (const Frame& frame : animation.frames) sum += MillisecondsOf(frame);
    return sum;
}

std::string SecondsText(int64_t milliseconds) {
    char text[40];
    const double seconds = static_cast<double>(milliseconds) / 1000;
    std::snprintf(text, sizeof text, milliseconds % 10 == 0 ? "%.2f s" : "%.3f s", seconds);
    return text;
}

std::string TimesText(const Animation& animation) {
    const std::vector<Run> runs = RunsOf(animation);
    if (runs.size() > kMostRuns) {
        const auto [least, most] = std::minmax_element(
            runs.begin(), runs.end(), [](Run a, Run b) { return a.milliseconds < b.milliseconds; });
        return std::to_string(least->milliseconds) + " to " + std::to_string(most->milliseconds) + " ms";
    }
    std::string text;
    for (const Run& run : runs) {
        if (!text.empty()) text += ", ";
        if (run.frames > 1) text += std::to_string(run.frames) + " x ";
        text += std::to_string(run.milliseconds) + " ms";
    }
    return text;
}

int PlaysOf(int loopCount) {
    return loopCount == kLoopForever ? 0 : loopCount == kLoopNone ? 1 : loopCount + 1;
}

std::string PlaysText(int loopCount) {
    const int plays = PlaysOf(loopCount);
    if (plays == 0) return "forever";
    return plays == 1 ? "once" : std::to_string(plays) + " times";
}

}  // namespace kfx::commands
