// SPDX-License-Identifier: MIT
#include "commands/fit_search.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>

#include "commands/fit_estimates.h"
#include "commands/fit_look.h"

namespace kfx::commands {
namespace {

constexpr int kBestQuality = 100;
constexpr double kNoLook = -1;
constexpr size_t kNoPlace = SIZE_MAX;
constexpr double kVisible = 0.01;  // decibels: less is no better look

struct Search {
    FitEstimates estimates;
    const Animation& wanted;
    FitFound* found;
    std::vector<size_t> places;  // of what was tried, in the pool; kNoPlace: it has not been estimated
};

double BestLookOf(const Search& search) {
    return search.found->fits ? search.found->tried[search.found->chosen].look : kNoLook;
}

// How alike two settings err in their estimates: the more, the more they have in common.
int Likeness(const FitSettings& a, const FitSettings& b) {
    return (a.dither == b.dither) + (a.supercompress == b.supercompress) + ((a.lossy > 0) == (b.lossy > 0)) +
           (a.edits.every == b.edits.every) + (a.palette == b.palette);
}

// An estimate, corrected by what the most alike trials have come to.
FitEstimate Corrected(const Search& search, const FitEstimate& estimate) {
    int most = -1, count = 0;
    double ratio = 0, difference = 0;
    for (size_t i = 0; i < search.places.size(); ++i) {
        if (search.places[i] == kNoPlace) continue;
        const FitTrial& trial = search.found->tried[i];
        const FitEstimate& before = search.estimates.pool[search.places[i]];
        const int likeness = Likeness(trial.settings, estimate.settings);
        if (likeness < most) continue;
        if (likeness > most) most = likeness, count = 0, ratio = difference = 0;
        ++count;
        ratio += std::log(static_cast<double>(trial.bytes) / before.bytes);
        difference += trial.look - before.look;
    }
    FitEstimate corrected = estimate;
    if (count == 0) return corrected;
    corrected.bytes *= std::exp(ratio / count);
    if (estimate.look < kExactLook) corrected.look += difference / count;
    return corrected;
}

// Tries settings with all frames and keeps the file if it is the best.
bool Try(Search* search, const FitSettings& settings, size_t place, Failure* failure) {
    FitFound* const found = search->found;
    search->estimates.tell(settings);
    FitTrial trial;
    const TrialEnd end = MakeTrial(search->estimates.work, search->wanted, settings, &trial, failure);
    if (end == TrialEnd::Failed) return false;
    if (end == TrialEnd::Impossible) return true;
    const bool fits = trial.bytes <= search->estimates.mostBytes;
    const bool isBetter =
        fits ? trial.look > BestLookOf(*search)
             : !found->fits && (found->tried.empty() || trial.bytes < found->tried[found->chosen].bytes);
    if (isBetter) {
        found->fits = fits;
        found->chosen = found->tried.size();
        found->file = fits ? std::move(trial.file) : std::vector<uint8_t>();
    }
    trial.file = {};
    found->tried.push_back(std::move(trial));
    search->places.push_back(place);
    return true;
}

// Where the untried settings of the best look stand that fit and look better than what has been found; where
// nothing fits yet and none is left, the smallest ones. kNoPlace: there are none.
size_t NextToTry(const Search& search) {
    size_t next = kNoPlace, smallest = kNoPlace;
    double bestLook = BestLookOf(search) + kVisible;
    double fewestBytes = std::numeric_limits<double>::max();
    for (size_t i = 0; i < search.estimates.pool.size(); ++i) {
        const FitEstimate& estimate = search.estimates.pool[i];
        if (estimate.tried || estimate.impossible) continue;
        const FitEstimate corrected = Corrected(search, estimate);
        if (corrected.bytes < fewestBytes) {
            fewestBytes = corrected.bytes;
            smallest = i;
        }
        const bool fits = corrected.bytes <= static_cast<double>(search.estimates.mostBytes);
        if (!fits || corrected.look <= bestLook) continue;
        bestLook = corrected.look;
        next = i;
    }
    const std::vector<FitTrial>& tried = search.found->tried;
    const bool isSmaller =
        tried.empty() || fewestBytes < static_cast<double>(tried[search.found->chosen].bytes);
    return next != kNoPlace || search.found->fits || !isSmaller ? next : smallest;
}

// The settings of a whole group that stand next to the given ones, so that they can be tried as well.
bool EstimateNeighbours(Search* search, const FitSettings& settings, bool smaller, Failure* failure) {
    const FitEstimates& estimates = search->estimates;
    for (const FitGroup& group : MainGroups(estimates.work.line, estimates.subject, settings.edits)) {
        for (size_t i = 0; i < group.steps.size(); ++i) {
            if (OptionsText(estimates.work.line, group.steps[i]) !=
                OptionsText(estimates.work.line, settings))
                continue;
            const size_t neighbour = smaller ? i + 1 : i - 1;
            size_t place = 0;
            if (neighbour < group.steps.size() &&
                !EstimateSettings(&search->estimates, group.steps[neighbour], &place, failure)) {
                return false;
            }
        }
    }
    return true;
}

bool TryInOrder(Search* search, Failure* failure) {
    while (search->found->tried.size() < search->estimates.work.line.fit.mostTrials) {
        const size_t place = NextToTry(*search);
        if (place == kNoPlace) return true;
        search->estimates.pool[place].tried = true;
        const FitSettings settings = search->estimates.pool[place].settings;
        const size_t before = search->found->tried.size();
        if (!Try(search, settings, place, failure)) return false;
        if (search->found->tried.size() == before) continue;
        const bool tooLarge = search->found->tried.back().bytes > search->estimates.mostBytes;
        if (!EstimateNeighbours(search, settings, tooLarge, failure)) return false;
    }
    return true;
}

// The least number above the chosen one that is not known to fit: of those in the pool, and for a quality of
// the search's own also one above the best; 0: none.
int TooLargeBeside(const Search& search, const FitSettings& chosen) {
    const CommandLine& line = search.estimates.work.line;
    const bool stepsOverQualities = chosen.palette != "custom" && line.quality < 0;
    int number = stepsOverQualities ? kBestQuality + 1 : 0;
    for (const FitEstimate& estimate : search.estimates.pool) {
        const int other = StepNumberOf(estimate.settings);
        const bool isBeside =
            OptionsText(line, WithStepNumber(chosen, other)) == OptionsText(line, estimate.settings);
        if (isBeside && other > StepNumberOf(chosen) && (number == 0 || other < number)) number = other;
    }
    return number;
}

// What lies between the steps: bisection from the chosen number to the next that is too large, down to single
// colours or qualities. Between neighbouring steps that takes six trials at most.
bool Refine(Search* search, Failure* failure) {
    const FitFound& found = *search->found;
    if (!found.fits || StepNumberOf(found.tried[found.chosen].settings) < 0) return true;
    const CommandLine& line = search->estimates.work.line;
    const FitSettings chosen = found.tried[found.chosen].settings;
    if (line.colors > 0 && chosen.palette == "custom") return true;
    int low = StepNumberOf(chosen), high = TooLargeBeside(*search, chosen);
    while (high - low > 1) {
        const int middle = (low + high) / 2;
        if (!Try(search, WithStepNumber(chosen, middle), kNoPlace, failure)) return false;
        (found.tried.back().bytes <= search->estimates.mostBytes ? low : high) = middle;
    }
    return true;
}

}  // namespace

bool SearchFit(const FitWork& work, const Animation& wanted, const FitSubject& subject, const TellTrial& tell,
               FitFound* found, Failure* failure) {
    *found = {};
    Search search = {{work, subject, tell, work.line.fit.mostBytes, TakeSample(work.line, wanted), {}, 0},
                     wanted,
                     found,
                     {}};
    if (!EstimateAll(&search.estimates, failure)) return false;
    found->estimates = search.estimates.pool.size();
    return TryInOrder(&search, failure) && Refine(&search, failure);
}

}  // namespace kfx::commands
