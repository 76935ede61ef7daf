// SPDX-License-Identifier: MIT
#include "commands/playback.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace kfx::commands {
namespace {

constexpr int kTimeOfNoTime = 100;  // milliseconds

int64_t TimeOf(const Frame& frame) {
    const int time = MillisecondsOf(frame);
    return time > 0 ? time : kTimeOfNoTime;
}

int64_t LengthOf(const Animation& animation) {
    int64_t sum = 0;
    for (const Frame& frame : animation.frames) sum += TimeOf(frame);
    return sum;
}

bool IsSamePicture(const Frame& a, const Frame& b) {
    if (a.pixels == b.pixels) return true;
    if (!a.transparent || !b.transparent || a.pixels.size() != b.pixels.size()) return false;
    for (size_t i = 0; i < a.pixels.size(); i += 4) {
        if (!IsSamePixel(&a.pixels[i], &b.pixels[i])) return false;
    }
    return true;
}

bool ShowsOnePicture(const Animation& animation) {
    return std::all_of(animation.frames.begin(), animation.frames.end(),
                       [&](const Frame& frame) { return IsSamePicture(frame, animation.frames.front()); });
}

// Compares the two frames of a moment.
void CompareFrames(const Animation& a, const Animation& b, Moment* moment) {
    const Frame& first = a.frames[moment->frameA];
    const Frame& second = b.frames[moment->frameB];
    moment->quality = {std::numeric_limits<double>::infinity(), 1};
    if (first.pixels == second.pixels) return;
    const auto width = static_cast<size_t>(a.width);
    for (size_t i = 0; i < first.pixels.size(); i += 4) {
        if (IsSamePixel(&first.pixels[i], &second.pixels[i])) continue;
        if (moment->differentPixels++ == 0) {
            moment->x = static_cast<int>(i / 4 % width);
            moment->y = static_cast<int>(i / 4 / width);
        }
    }
    if (moment->differentPixels > 0) moment->quality = ComparePictures(first, second, a.width, a.height);
}

// Walks along both at once.
std::vector<Moment> MomentsOf(const Animation& a, const Animation& b, int tolerance) {
    std::vector<Moment> moments;
    size_t i = 0, j = 0;
    int64_t now = 0, endA = TimeOf(a.frames[0]), endB = TimeOf(b.frames[0]);
    while (i < a.frames.size() && j < b.frames.size()) {
        const int64_t end = std::min(endA, endB);
        // A short meeting of two frames that both last longer comes from times that were rounded. Less than
        // half of a frame's time, so that each frame is compared with at least one.
        const bool isRounding = end - now <= tolerance && 2 * (end - now) < TimeOf(a.frames[i]) &&
                                2 * (end - now) < TimeOf(b.frames[j]);
        if (!isRounding) {
            moments.push_back({.milliseconds = now, .frameA = i, .frameB = j, .quality = {}});
            CompareFrames(a, b, &moments.back());
        }
        now = end;
        if (endA == end && ++i < a.frames.size()) endA += TimeOf(a.frames[i]);
        if (endB == end && ++j < b.frames.size()) endB += TimeOf(b.frames[j]);
    }
    return moments;
}

}  // namespace

bool IsSamePixel(const uint8_t* a, const uint8_t* b) {
    return std::memcmp(a, b, 4) == 0 || (a[3] == 0 && b[3] == 0);
}

Comparison CompareAnimations(const Animation& a, const Animation& b, const CompareOptions& options) {
    Comparison comparison;
    comparison.sameSize = a.width == b.width && a.height == b.height;
    const bool areStill = ShowsOnePicture(a) && ShowsOnePicture(b);
    comparison.samePlays = areStill || a.loopCount == b.loopCount;
    comparison.sameDuration = areStill || std::abs(LengthOf(a) - LengthOf(b)) <= options.timeTolerance;
    if (!comparison.sameSize) return comparison;
    if (areStill) {
        comparison.moments.emplace_back();
        CompareFrames(a, b, &comparison.moments.back());
    } else {
        comparison.moments = MomentsOf(a, b, options.timeTolerance);
    }
    return comparison;
}

}  // namespace kfx::commands
