// SPDX-License-Identifier: MIT
#include "framework/effect_operations.h"

#include "framework/memory_guards.h"
#include "framework/panel.h"
#include "framework/source_animation.h"
#include "host/host_requests.h"

namespace kfx {
namespace {

// Puts the entry back with a kernel's result, if there is one.
bool TakeResult(const FrameList& frames, int32_t index, const FrameEntry& entry, ImageHandle result) {
    return !result || ReplaceImage(frames, index, entry, result);
}

// A build in which each frame is transformed by itself.
struct SingleFrames {
    const Effect& effect;
    const EffectBuildContext& context;
    const KernelInput& input;
    KernelCache caches[kMostFrameThreads];  // one for each worker
};

// False: the list could not be locked.
bool TransformFrame(void* user, int32_t i, int32_t worker) {
    auto* single = static_cast<SingleFrames*>(user);
    const FrameList& frames = *single->context.frames;
    KernelInput input = single->input;
    input.cache = &single->caches[worker];
    FrameEntry entry;
    return GetFrame(frames, i, &entry) &&
           TakeResult(frames, i, entry, single->effect.apply(entry.image, input));
}

// False: the window has gone.
bool TellFrameDone(void* user, int32_t i) {
    const EffectBuildContext& context = static_cast<SingleFrames*>(user)->context;
    RequestProgress(context.host, i, context.frames->count);
    return IsPanelOpen(context.window);
}

// False: the list could not be locked, or the window has gone.
bool BuildEachFrame(const Effect& effect, const EffectBuildContext& context, const KernelInput& input) {
    SingleFrames single = {.effect = effect, .context = context, .input = input, .caches = {}};
    const FrameWork work = {
        .user = &single, .before = nullptr, .transform = TransformFrame, .after = TellFrameDone};
    return RunFrames(effect.framesInOrder ? nullptr : context.runner, context.frames->count, work);
}

bool GatherFromFrames(const GatheringPasses& passes, EffectBuildContext* context, uint64_t record[2]) {
    const FrameList& frames = *context->frames;
    for (int32_t i = 0; i < frames.count; ++i) {
        FrameEntry entry;
        if (!GetFrame(frames, i, &entry)) return false;
        passes.gather(entry.image, record);
        RequestProgress(context->host, i, 2 * frames.count);
        if (!IsPanelOpen(context->window)) return false;
    }
    return true;
}

bool ApplyToFrames(const GatheringPasses& passes, EffectBuildContext* context, const uint64_t record[2]) {
    const FrameList& frames = *context->frames;
    for (int32_t i = 0; i < frames.count; ++i) {
        FrameEntry entry;
        if (!GetFrame(frames, i, &entry)) return false;
        if (!TakeResult(frames, i, entry, passes.apply(entry.image, record))) return false;
        RequestProgress(context->host, frames.count + i, 2 * frames.count);
        if (!IsPanelOpen(context->window)) return false;
    }
    return true;
}

// Fills the record. False: the list could not be locked, the window has gone, or no summary can be made.
bool Gather(const GatheringPasses& passes, EffectBuildContext* context, uint64_t record[2]) {
    GatheredSummary* const gathered = context->gathered;
    if (!gathered) return GatherFromFrames(passes, context, record);
    if (!passes.summarize || !passes.restore) return false;
    if (gathered->isKnown) {
        passes.restore(gathered->summary, record);
        return true;
    }
    gathered->isKnown =
        GatherFromFrames(passes, context, record) && passes.summarize(record, &gathered->summary);
    return gathered->isKnown;
}

// False: the list could not be locked, the window has gone, or no summary can be made.
bool BuildInTwoPasses(const GatheringPasses& passes, EffectBuildContext* context) {
    uint64_t record[2] = {0, 0};
    const bool built = Gather(passes, context, record) && ApplyToFrames(passes, context, record);
    passes.release(record);
    return built;
}

}  // namespace

bool ReadKernelInput(const Effect& effect, void* window, MemoryHandle source, KernelInput* input) {
    *input = {};
    for (size_t i = 0; i < effect.controls.count; ++i)
        input->values[i] = ReadControl(effect.controls.rows[i], window);
    return ReadBackgroundColor(source, &input->background);
}

ImageHandle ApplyKernel(const Effect& effect, ImageHandle image, const KernelInput& input) {
    const ImageHandle result = effect.apply(image, input);
    if (!result) return image;
    FreeMemory(image);
    return result;
}

int32_t PreviewEffect(const Effect& effect, EffectRunContext* context) {
    KernelCache cache;
    KernelInput input;
    const bool read = ReadKernelInput(effect, context->window, context->source, &input);
    input.cache = &cache;
    context->flags |= kRunFirstFrameOnly;
    context->image = FetchFirstFrame(context->source);
    if (context->image && read) context->image = ApplyKernel(effect, context->image, input);
    return 1;
}

int32_t BuildEffect(const Effect& effect, EffectBuildContext* context) {
    KernelInput input;
    if (!ReadKernelInput(effect, context->window, context->source, &input)) return 0;
    // Without a source there are no frames: the build driver reports that. A part of the frames must not be
    // built.
    if (DecodeAllFrames(context->source, context->frames) == DecodeResult::Incomplete) return 0;
    const FreedMemoryKept kept;
    const bool gathers = effect.gathering && effect.gathering->wanted(input);
    return gathers ? BuildInTwoPasses(*effect.gathering, context) : BuildEachFrame(effect, *context, input);
}

}  // namespace kfx
