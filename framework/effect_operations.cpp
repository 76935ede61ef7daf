// SPDX-License-Identifier: MIT
#include "framework/effect_operations.h"

#include "framework/panel.h"
#include "framework/source_animation.h"
#include "host/host_requests.h"

namespace kfx {
namespace {

KernelInput ReadInput(const EffectRecord& effect, void* window, KernelCache* cache) {
    KernelInput input = {};
    for (size_t i = 0; i < effect.controlCount; ++i)
        input.values[i] = ReadControl(effect.controls[i], window);
    input.background = BackgroundColor();
    input.cache = cache;
    return input;
}

ImageHandle Replace(ImageHandle old, ImageHandle result) {
    if (!result) return old;
    FreeMemory(old);
    return result;
}

void BuildEachFrame(const EffectRecord& effect, EffectBuildContext* context, const KernelInput& input) {
    FrameList* frames = context->frames;
    for (int32_t i = 0; i < frames->count; ++i) {
        FrameEntry entry;
        if (GetFrame(*frames, i, &entry)) {
            entry.image = ApplyKernel(effect, entry.image, input);
            PutFrame(*frames, i, entry);
        }
        RequestProgress(context->host, i, frames->count);
    }
}

void BuildInTwoPasses(const GatheringPasses& passes, EffectBuildContext* context) {
    FrameList* frames = context->frames;
    uint64_t record[2] = {0, 0};
    FrameEntry entry;
    for (int32_t i = 0; i < frames->count; ++i) {
        if (GetFrame(*frames, i, &entry)) passes.gather(entry.image, record);
        RequestProgress(context->host, i, 2 * frames->count);
    }
    for (int32_t i = 0; i < frames->count; ++i) {
        if (GetFrame(*frames, i, &entry)) {
            entry.image = Replace(entry.image, passes.apply(entry.image, record));
            PutFrame(*frames, i, entry);
        }
        RequestProgress(context->host, frames->count + i, 2 * frames->count);
    }
    passes.release(record);
}

}  // namespace

ImageHandle ApplyKernel(const EffectRecord& effect, ImageHandle image, const KernelInput& input) {
    return Replace(image, effect.kernel(image, input));
}

int32_t PreviewEffect(const EffectRecord& effect, EffectRunContext* context) {
    KernelCache cache;
    const KernelInput input = ReadInput(effect, context->window, &cache);
    context->flags |= kRunFirstFrameOnly;
    context->image = FetchFirstFrame();
    if (context->image) context->image = ApplyKernel(effect, context->image, input);
    return 1;
}

int32_t BuildEffect(const EffectRecord& effect, EffectBuildContext* context) {
    KernelCache cache;
    const KernelInput input = ReadInput(effect, context->window, &cache);
    // A malformed or missing source leaves what was decoded; the build driver judges the count.
    DecodeAllFrames(context->frames);
    if (effect.gathering && effect.gathering->wanted(input))
        BuildInTwoPasses(*effect.gathering, context);
    else
        BuildEachFrame(effect, context, input);
    return 1;
}

}  // namespace kfx
