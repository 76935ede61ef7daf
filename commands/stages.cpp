// SPDX-License-Identifier: MIT
#include "commands/stages.h"

#include <utility>

#include "commands/alpha_pixels.h"
#include "commands/alpha_ways.h"
#include "media/readers.h"

namespace kfx::commands {
namespace {

// Everything but the frames; they stay where they are.
Animation WithoutFrames(Animation* animation) {
    std::vector<Frame> frames = std::exchange(animation->frames, {});
    Animation copy = *animation;
    animation->frames = std::move(frames);
    return copy;
}

// Opaque frames in, as many opaque frames out.
bool RunOpaque(const OpenEngine& engine, HostSession* session, const Job& job, Animation* animation,
               Failure* failure) {
    const bool hasPalette = animation->hasGlobalPalette;
    std::vector<RgbColor> palette = animation->globalPalette;
    const size_t frames = animation->frames.size();
    *session->source = std::move(*animation);
    engine.engine.dropSource(engine.opened);
    if (!engine.engine.build(engine.opened, job, true, failure)) return false;
    if (session->built.frames.size() != frames) {
        *failure = {kExitEngine, "the plug-in has built another number of frames than the source has."};
        return false;
    }
    *animation = PlayBuilt(session->built, session->record);
    session->built = {};
    // A later job may be asked to keep it.
    animation->hasGlobalPalette = hasPalette;
    animation->globalPalette = std::move(palette);
    return true;
}

// The job with nothing, in the colour of the ground, beyond the picture's edges, unless a colour there has
// been asked for.
Job OverGround(Job job, uint8_t level) {
    if (job.background != Background::Standard) return job;
    job.background = Background::Color;
    job.backgroundColor = level * 0x010101u;
    return job;
}

void MakeOpaque(uint8_t level, Frame* frame) {
    PutOver(level, &frame->pixels);
    frame->transparent = false;
}

// Twice: all frames over black, and those that are transparent, if any, over white.
bool RunSolved(const OpenEngine& engine, HostSession* session, const Job& job, Animation* animation,
               Failure* failure) {
    Animation white = WithoutFrames(animation);
    std::vector<size_t> numbers;
    for (size_t i = 0; i < animation->frames.size(); ++i) {
        Frame& frame = animation->frames[i];
        if (!frame.transparent) continue;
        numbers.push_back(i);
        white.frames.push_back(frame);
        MakeOpaque(255, &white.frames.back());
        MakeOpaque(0, &frame);
    }
    if (!RunOpaque(engine, session, OverGround(job, 0), animation, failure)) return false;
    if (numbers.empty()) return true;
    if (!RunOpaque(engine, session, OverGround(job, 255), &white, failure)) return false;
    for (size_t i = 0; i < numbers.size(); ++i) {
        Frame& frame = animation->frames[numbers[i]];
        SolveAlpha(white.frames[i].pixels, &frame.pixels);
        NoteTransparency(&frame);
    }
    return true;
}

// The effect moves the places of the pixels instead of the pixels.
bool RunOnPlaces(const OpenEngine& engine, HostSession* session, const Job& job, Animation* animation,
                 Failure* failure) {
    std::vector<Pixels> sources;
    const Pixels places = DrawPlaces(animation->width, animation->height);
    for (Frame& frame : animation->frames) {
        sources.push_back(std::exchange(frame.pixels, places));
        frame.indexed = frame.transparent = false;
    }
    if (!RunOpaque(engine, session, job, animation, failure)) return false;
    for (size_t i = 0; i < sources.size(); ++i) {
        Frame& frame = animation->frames[i];
        frame.pixels = FetchPlaces(frame.pixels, sources[i], animation->width, animation->height);
        sources[i] = {};
        NoteTransparency(&frame);
    }
    return true;
}

// A frame that the effect may see instead of a transparent one. Returns the alpha.
std::vector<uint8_t> HideAlpha(const AlphaRule& rule, int width, int height, Frame* frame) {
    frame->transparent = false;
    if (rule.way == AlphaWay::Keep) {
        if (rule.hidden == HiddenColors::Nearest) FillFromNearest(width, height, &frame->pixels);
        if (rule.hidden == HiddenColors::InProportion) FillInProportion(&frame->pixels);
        return TakeAlphaOut(&frame->pixels);
    }
    Pixels overBlack = frame->pixels;
    PutOver(0, &overBlack);
    std::vector<uint8_t> alpha = TakeAlphaOut(&frame->pixels);
    frame->pixels = std::move(overBlack);
    return alpha;
}

// Once, with the outline as it was.
bool RunInOutline(const OpenEngine& engine, HostSession* session, const Job& job, const AlphaRule& rule,
                  Animation* animation, Failure* failure) {
    std::vector<std::vector<uint8_t>> alphas(animation->frames.size());
    for (size_t i = 0; i < alphas.size(); ++i) {
        Frame& frame = animation->frames[i];
        if (frame.transparent) alphas[i] = HideAlpha(rule, animation->width, animation->height, &frame);
    }
    if (!RunOpaque(engine, session, job, animation, failure)) return false;
    for (size_t i = 0; i < alphas.size(); ++i) {
        Frame& frame = animation->frames[i];
        if (rule.way == AlphaWay::Keep) {
            PutAlphaBack(alphas[i], &frame.pixels);
        } else {
            CutOut(alphas[i], rule.way == AlphaWay::Light, &frame.pixels);
        }
        NoteTransparency(&frame);
    }
    return true;
}

}  // namespace

bool RunStage(const OpenEngine& engine, HostSession* session, const Job& job, Animation* animation,
              Failure* failure) {
    return RunStageOfPart(engine, session, job, !HasAlpha(*animation), animation, failure);
}

bool RunStageOfPart(const OpenEngine& engine, HostSession* session, const Job& job, bool opaque,
                    Animation* part, Failure* failure) {
    if (opaque) return RunOpaque(engine, session, job, part, failure);
    const AlphaRule& rule = AlphaRuleOf(job.effectName);
    switch (rule.way) {
        case AlphaWay::Solve:
            return RunSolved(engine, session, job, part, failure);
        case AlphaWay::Places:
            return RunOnPlaces(engine, session, job, part, failure);
        case AlphaWay::Keep:
        case AlphaWay::Edges:
        case AlphaWay::Light:
            break;
    }
    return RunInOutline(engine, session, job, rule, part, failure);
}

}  // namespace kfx::commands
