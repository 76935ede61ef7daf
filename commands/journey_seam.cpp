// SPDX-License-Identifier: MIT
#include "commands/journey_seam.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace kfx::commands {
namespace {

constexpr double kMostLarger = 1.25;
constexpr double kMostLevels = 0.25;

// Colours weighed by their alpha, so that hidden ones do not count.
std::vector<uint8_t> WeighedByAlpha(std::vector<uint8_t> picture) {
    for (size_t i = 0; i + 3 < picture.size(); i += 4) {
        const unsigned alpha = picture[i + 3];
        if (alpha == 255) continue;
        for (size_t c = i; c < i + 3; ++c) picture[c] = static_cast<uint8_t>(picture[c] * alpha / 255);
    }
    return picture;
}

double Difference(const std::vector<uint8_t>& a, const std::vector<uint8_t>& b) {
    uint64_t sum = 0;
    for (size_t i = 0; i + 3 < a.size(); i += 4) {
        int most = 0;
        for (size_t c = i; c < i + 4; ++c) most = std::max(most, std::abs(a[c] - b[c]));
        sum += static_cast<uint64_t>(most);
    }
    return a.empty() ? 0 : 4 * static_cast<double>(sum) / static_cast<double>(a.size());
}

std::string LevelsText(double levels) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", levels);
    return text;
}

}  // namespace

Steps MeasureSteps(const BuiltAnimation& built, const SourceRecord& source) {
    Steps steps;
    std::vector<uint8_t> canvas, first, before;
    for (size_t i = 0; i < built.frames.size(); ++i) {
        std::vector<uint8_t> shown = WeighedByAlpha(ShownPicture(built, i, source, &canvas));
        if (i == 0) {
            first = shown;
        } else {
            steps.largest = std::max(steps.largest, Difference(before, shown));
        }
        before = std::move(shown);
    }
    steps.last = Difference(before, first);
    return steps;
}

bool IsSeamless(const Steps& steps) { return steps.last <= kMostLarger * steps.largest + kMostLevels; }

bool CheckSeam(const BuiltAnimation& built, const SourceRecord& source, bool loops,
               std::vector<std::string>* notes) {
    const Steps steps = MeasureSteps(built, source);
    const bool plays = !loops || source.loopCount != kLoopNone;
    if (!plays) notes->push_back("plays only once; --loop forever repeats it");
    if (IsSeamless(steps)) return plays;
    notes->push_back("the last frame does not lead into the first: pixels change by " +
                     LevelsText(steps.last) + " levels there, and by " + LevelsText(steps.largest) +
                     " at most between other frames");
    return false;
}

}  // namespace kfx::commands
