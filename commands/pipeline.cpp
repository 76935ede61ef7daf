// SPDX-License-Identifier: MIT
#include "commands/pipeline.h"

#include <utility>

namespace kfx::commands {
namespace {

// Builds the animation in true colour and puts the result in its place. A palette of its own stays with it:
// a later job may be asked to keep it.
bool RunStage(const OpenEngine& engine, HostSession* session, const Job& job, Animation* animation,
              Failure* failure) {
    const bool hasPalette = animation->hasGlobalPalette;
    std::vector<RgbColor> palette = std::move(animation->globalPalette);
    animation->globalPalette = palette;
    *session->source = std::move(*animation);
    engine.engine.dropSource(engine.opened);
    if (!engine.engine.build(engine.opened, job, true, failure)) return false;
    *animation = PlayBuilt(session->built, session->record);
    session->built = {};
    animation->hasGlobalPalette = hasPalette;
    animation->globalPalette = std::move(palette);
    return true;
}

}  // namespace

bool RunJobs(const OpenEngine& engine, HostSession* session, std::vector<Job> jobs, Failure* failure) {
    if (jobs.size() == 1) return engine.engine.build(engine.opened, jobs.front(), false, failure);
    Animation animation = std::move(*session->source);
    for (Job& job : jobs) {
        CompleteValues(&job);
        if (&job == &jobs.back()) break;
        if (!RunStage(engine, session, job, &animation, failure)) return false;
    }
    *session->source = std::move(animation);
    engine.engine.dropSource(engine.opened);
    return engine.engine.build(engine.opened, jobs.back(), false, failure);
}

}  // namespace kfx::commands
