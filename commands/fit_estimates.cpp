// SPDX-License-Identifier: MIT
#include "commands/fit_estimates.h"

#include <algorithm>

namespace kfx::commands {
namespace {

constexpr double kNothingFits = -1;
// A dithered palette must come as near as that to the best one for its other settings to be judged as well.
constexpr double kNearEnough = 1;  // decibels
// On one frame it may seem to be by so much worse than on the others.
constexpr double kFarBehind = kNearEnough + 2;
constexpr int kMostWorse = 2;  // scales in turn

bool Fits(const FitEstimates& estimates, const FitEstimate& estimate) {
    return !estimate.impossible && estimate.bytes <= static_cast<double>(estimates.mostBytes);
}

// The best look among what fits by the estimate, from `first` on in the pool.
double BestLook(const FitEstimates& estimates, size_t first) {
    double best = kNothingFits;
    for (size_t i = first; i < estimates.pool.size(); ++i) {
        if (Fits(estimates, estimates.pool[i])) best = std::max(best, estimates.pool[i].look);
    }
    return best;
}

// The first step of a group that fits: outwards from the step that was the first in the group before, then by
// bisection.
bool EstimateGroup(FitEstimates* estimates, const FitGroup& group, Failure* failure) {
    const size_t count = group.steps.size();
    // Steps before `from` are too large, those from `to` on fit.
    size_t from = 0, to = count, reach = 1;
    size_t step = std::min(estimates->firstThatFits, count - 1);
    while (from < to) {
        size_t place = 0;
        if (!EstimateSettings(estimates, group.steps[step], &place, failure)) return false;
        const bool fits = Fits(*estimates, estimates->pool[place]);
        if (fits)
            to = step;
        else
            from = step + 1;
        if (from > 0 && to < count)
            step = (from + to) / 2;
        else
            step = fits ? step - std::min(step, reach) : std::min(step + reach, count - 1);
        reach *= 2;
    }
    if (count > 1) estimates->firstThatFits = std::min(to, count - 1);
    return true;
}

bool EstimateGroups(FitEstimates* estimates, const std::vector<FitGroup>& groups, Failure* failure) {
    for (const FitGroup& group : groups) {
        if (!EstimateGroup(estimates, group, failure)) return false;
    }
    return true;
}

// Whether settings look so much worse than `best` on one frame that the others need not be judged.
bool IsFarBehind(const FitEstimates& estimates, const FitSettings& settings, double best, bool* isBehind,
                 Failure* failure) {
    FitTrial trial;
    const TrialEnd end = MakeSampleTrial(estimates.work, estimates.sample.still, settings, &trial, failure);
    *isBehind = end == TrialEnd::Done && trial.look < best - kFarBehind;
    return end != TrialEnd::Failed;
}

// The fixed palettes, each dithered at first.
bool EstimatePalettes(FitEstimates* estimates, Failure* failure) {
    const CommandLine& line = estimates->work.line;
    const double best = BestLook(*estimates, 0);
    for (const FitGroup& group : PaletteGroups(line, estimates->subject)) {
        size_t place = 0;
        bool isBehind = false;
        if (best != kNothingFits && !IsFarBehind(*estimates, group.steps[0], best, &isBehind, failure))
            return false;
        if (isBehind) continue;
        if (!EstimateSettings(estimates, group.steps[0], &place, failure)) return false;
        if (best != kNothingFits && estimates->pool[place].look < best - kNearEnough) continue;
        if (!EstimateGroups(estimates, OtherWaysOf(line, estimates->subject, group.steps[0]), failure))
            return false;
    }
    return true;
}

// Computed palettes, or qualities, at one scale and rate. `*look`: the best that fits.
bool EstimateScale(FitEstimates* estimates, int scale, int every, double* look, Failure* failure) {
    const CommandLine& line = estimates->work.line;
    const std::vector<FitGroup> groups =
        MainGroups(line, estimates->subject, {.shrink = scale, .every = every});
    const size_t first = estimates->pool.size();
    if (!EstimateGroups(estimates, groups, failure)) return false;
    *look = BestLook(*estimates, first);
    return true;
}

// The scales at one rate, from `*start` on to both sides until they only look worse. `*start` becomes the
// best one.
bool EstimateScales(FitEstimates* estimates, int every, size_t* start, Failure* failure) {
    const std::vector<int> scales = ScalesOf(estimates->work.line);
    double best = kNothingFits, look = kNothingFits;
    if (!EstimateScale(estimates, scales[*start], every, &best, failure)) return false;
    const size_t from = *start;
    for (size_t i = from; i > 0; --i) {
        if (!EstimateScale(estimates, scales[i - 1], every, &look, failure)) return false;
        if (look <= best) break;
        best = look;
        *start = i - 1;
    }
    int worse = 0;
    for (size_t i = from + 1; *start >= from && i < scales.size() && worse < kMostWorse; ++i) {
        if (!EstimateScale(estimates, scales[i], every, &look, failure)) return false;
        worse = best != kNothingFits && look <= best ? worse + 1 : 0;
        if (look > best) *start = i;
        best = std::max(best, look);
    }
    return true;
}

}  // namespace

bool EstimateSettings(FitEstimates* estimates, const FitSettings& settings, size_t* place, Failure* failure) {
    const CommandLine& line = estimates->work.line;
    const std::string name = OptionsText(line, settings);
    for (*place = 0; *place < estimates->pool.size(); ++*place) {
        if (OptionsText(line, estimates->pool[*place].settings) == name) return true;
    }
    estimates->tell(settings);
    FitTrial trial;
    const TrialEnd end =
        MakeSampleTrial(estimates->work, estimates->sample.frames, settings, &trial, failure);
    if (end == TrialEnd::Failed) return false;
    FitEstimate estimate;
    estimate.settings = settings;
    estimate.impossible = end == TrialEnd::Impossible;
    estimate.bytes = static_cast<double>(trial.bytes) * estimates->sample.parts +
                     static_cast<double>(estimates->sample.beside + trial.recipeBytes);
    estimate.look = trial.look;
    estimates->pool.push_back(estimate);
    return true;
}

bool EstimateAll(FitEstimates* estimates, Failure* failure) {
    const CommandLine& line = estimates->work.line;
    size_t scale = 0;
    for (const int every : RatesOf(line, estimates->subject)) {
        if (!EstimateScales(estimates, every, &scale, failure)) return false;
        // At other rates they fall behind computed palettes in the same way.
        if (every == RatesOf(line, estimates->subject)[0] && !EstimatePalettes(estimates, failure))
            return false;
    }
    return true;
}

}  // namespace kfx::commands
