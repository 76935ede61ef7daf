// SPDX-License-Identifier: MIT
// One rate for frames with times of their own.
#include <algorithm>
#include <cmath>
#include <numeric>

#include "media/raw_video.h"

namespace kfx {
namespace {

constexpr int64_t kStep = 10;           // milliseconds: the shortest at 100 frames a second
constexpr int64_t kTimeOfNoTime = 100;  // milliseconds
constexpr int64_t kMostPerSecond = 120;

FrameRate Reduced(int64_t numerator, int64_t denominator) {
    const int64_t common = std::gcd(numerator, denominator);
    return {numerator / common, denominator / common};
}

// In milliseconds.
std::vector<int64_t> TimesOf(const Animation& animation) {
    std::vector<int64_t> times;
    for (const Frame& frame : animation.frames) {
        const int64_t time = MillisecondsOf(frame);
        times.push_back(time > 0 ? time : kTimeOfNoTime);
    }
    return times;
}

// How far the end of a frame is at most from where the rate has it, in milliseconds.
double LargestError(const std::vector<int64_t>& times, FrameRate rate) {
    const double frameTime =
        1000 * static_cast<double>(rate.denominator) / static_cast<double>(rate.numerator);
    double error = 0;
    int64_t end = 0;
    for (size_t i = 0; i < times.size(); ++i) {
        end += times[i];
        error = std::max(error, std::fabs(static_cast<double>(end) - static_cast<double>(i + 1) * frameTime));
    }
    return error;
}

double PerSecond(FrameRate rate) {
    return static_cast<double>(rate.numerator) / static_cast<double>(rate.denominator);
}

// Whole numbers, and the rates of television.
std::vector<FrameRate> UsualRates() {
    std::vector<FrameRate> rates;
    for (int64_t rate = 1; rate <= kMostPerSecond; ++rate) rates.push_back({rate, 1});
    for (const int64_t rate : {24, 30, 48, 60, 120}) rates.push_back({1000 * rate, 1001});
    return rates;
}

// Whether the times are those of one rate, rounded to `unit` milliseconds.
bool FindRate(const std::vector<int64_t>& times, int64_t unit, FrameRate* rate) {
    if (std::all_of(times.begin(), times.end(), [&](int64_t time) { return time == times.front(); })) {
        *rate = Reduced(1000, times.front());
        return true;
    }
    const int64_t total = std::accumulate(times.begin(), times.end(), int64_t{0});
    const FrameRate mean = Reduced(1000 * static_cast<int64_t>(times.size()), total);
    const auto fits = [&](FrameRate likely) {
        return LargestError(times, likely) < static_cast<double>(unit);
    };
    const auto distance = [&](FrameRate likely) { return std::fabs(PerSecond(likely) - PerSecond(mean)); };
    bool found = false;
    for (const FrameRate& likely : UsualRates()) {
        if ((found && distance(likely) >= distance(*rate)) || !fits(likely)) continue;
        *rate = likely;
        found = true;
    }
    if (found || !fits(mean)) return found;
    *rate = mean;
    return true;
}

// Times as multiples of kStep; what rounding takes goes to the next.
void RoundToSteps(std::vector<int64_t>* times) {
    int64_t end = 0, rounded = 0;
    for (int64_t& time : *times) {
        end += time;
        time = (end + kStep / 2) / kStep * kStep - rounded;
        rounded += time;
    }
}

}  // namespace

ConstantRate PlanConstantRate(const Animation& animation) {
    ConstantRate plan;
    std::vector<int64_t> times = TimesOf(animation);
    if (times.empty()) return plan;
    const bool exact = std::any_of(animation.frames.begin(), animation.frames.end(),
                                   [](const Frame& frame) { return frame.milliseconds != kNoMilliseconds; });
    plan.repeats.assign(times.size(), 1);
    if (FindRate(times, exact ? 1 : kStep, &plan.rate)) return plan;

    const auto common = [&times] {
        return std::accumulate(times.begin(), times.end(), int64_t{0},
                               [](int64_t a, int64_t b) { return std::gcd(a, b); });
    };
    if (common() < kStep) RoundToSteps(&times);
    const int64_t step = std::max(common(), kStep);
    plan.rate = Reduced(1000, step);
    for (size_t i = 0; i < times.size(); ++i) plan.repeats[i] = static_cast<uint32_t>(times[i] / step);
    return plan;
}

}  // namespace kfx
