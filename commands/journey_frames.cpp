// SPDX-License-Identifier: MIT
#include "commands/journey_frames.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace kfx::commands {
namespace {

// The values of one moving parameter, by frame.
using Values = std::vector<int>;

bool AreAlike(const std::vector<Values>& all, size_t a, size_t b) {
    return std::all_of(all.begin(), all.end(), [&](const Values& values) { return values[a] == values[b]; });
}

Values ValuesOf(const MovingValue& moving, const Animation& animation, const WholeRun* part) {
    if (!part) return ValuesOver(TimelineOf(animation.frames), moving.parameter, moving.journey);
    const Values whole = ValuesOver(part->timeline, moving.parameter, moving.journey);
    Values values;
    for (const size_t number : part->numbers) values.push_back(whole[number]);
    return values;
}

// The job as it is for one frame.
Job JobAt(const Job& job, const std::vector<Values>& all, size_t frame) {
    Job still = job;
    still.moving.clear();
    for (size_t i = 0; i < all.size(); ++i) {
        const Parameter& parameter = job.moving[i].parameter;
        for (ChosenValue& chosen : still.values) {
            if (chosen.parameter.name == parameter.name) chosen.value = all[i][frame];
        }
    }
    return still;
}

// For the scope of a journey: what the session counts is a part of all frames.
struct WholeProgress {
    WholeProgress(HostSession* counting, size_t frames) : session(counting) {
        session->progressWhole = static_cast<int>(frames);
    }
    ~WholeProgress() {
        session->progressWhole = 0;
        session->progressBefore = 0;
    }
    WholeProgress(const WholeProgress&) = delete;
    WholeProgress& operator=(const WholeProgress&) = delete;

    HostSession* const session;
};

}  // namespace

bool BuildMovingFrames(const Job& job, const BuildFrames& build, HostSession* session, Animation* animation,
                       const WholeRun* part) {
    Job complete = job;
    CompleteValues(&complete);
    std::vector<Values> all;
    for (const MovingValue& moving : job.moving) all.push_back(ValuesOf(moving, *animation, part));

    const WholeProgress progress(session, animation->frames.size());
    std::vector<Frame> frames = std::exchange(animation->frames, {});
    // They go without what no effect looks at: some files carry megabytes of it.
    std::string comment = std::exchange(animation->comment, {});
    Metadata metadata = std::exchange(animation->metadata, {});
    for (size_t first = 0, end = 0; first < frames.size(); first = end) {
        while (end < frames.size() && AreAlike(all, first, end)) ++end;
        const auto from = frames.begin() + static_cast<std::ptrdiff_t>(first);
        const auto to = frames.begin() + static_cast<std::ptrdiff_t>(end);
        Animation alike = *animation;
        alike.frames.assign(std::make_move_iterator(from), std::make_move_iterator(to));
        session->progressBefore = static_cast<int>(first);
        if (!build(JobAt(complete, all, first), &alike)) return false;
        std::move(alike.frames.begin(), alike.frames.end(), from);
    }
    animation->frames = std::move(frames);
    animation->comment = std::move(comment);
    animation->metadata = std::move(metadata);
    return true;
}

}  // namespace kfx::commands
