// SPDX-License-Identifier: MIT
// The effect table's protocol, and its operations made from an effect's record.
#pragma once

#include <cstdint>

#include "framework/effect.h"
#include "framework/frame_list.h"
#include "framework/frame_runner.h"
#include "host/host_records.h"

namespace kfx {

struct EffectInitContext {
    void* window;
    uint64_t zero[3];
};

constexpr uint32_t kRunFirstFrameOnly = 2;

struct EffectRunContext {
    void* window;
    ImageHandle image;  // out: the rendered picture, the caller's to free
    int32_t width;      // of the preview area, pixels
    int32_t height;
    uint32_t flags;       // kRun...
    MemoryHandle source;  // the source animation's block, or null
};

// What an effect has gathered from all frames of an animation, for builds of some of them.
struct GatheredSummary {
    bool isKnown = false;  // by a build of all frames; what a build of some frames takes it from
    uint64_t summary = 0;
};

struct EffectBuildContext {
    void* window;
    FrameList* frames;
    MemoryHandle source;  // the source animation's block, or null
    const HostContext* host;
    const FrameRunner* runner = nullptr;  // null: frame after frame, on the calling thread
    // Null: the source has all frames of the animation, and nobody asks what is gathered from them. Otherwise
    // it is noted there, unless it is known already: then nothing is gathered.
    GatheredSummary* gathered = nullptr;
};

// One row of the effect table as window and build driver use it.
struct EffectDescriptor {
    const char* name;
    int32_t (*init)(EffectInitContext*);
    int32_t (*preview)(EffectRunContext*);
    int32_t (*build)(EffectBuildContext*);
    int32_t (*query)(void* record, int32_t question);
    int32_t (*notify)(void* window, uint32_t code);
    const uint32_t* controls;  // zero-terminated
    void* reserved;            // null
};

// Renders the first frame of context->source into context->image, which stays null without a source.
// Always 1.
int32_t PreviewEffect(const Effect& effect, EffectRunContext* context);

// Decodes context->source into context->frames and transforms every frame, reporting progress; a frame for
// which the kernel has no picture stays as it came. Frames are transformed by context->runner unless the
// effect needs their order. 0: memory was refused while decoding, or the source or the list could not be
// locked; the frames in the list belong to the caller in every case.
int32_t BuildEffect(const Effect& effect, EffectBuildContext* context);

// What the effect's kernel gets as its controls are now, all but the cache. `window` as in EffectRunContext,
// `source` the source animation's block, or null. False: the background colour could not be read.
bool ReadKernelInput(const Effect& effect, void* window, MemoryHandle source, KernelInput* input);

// Runs the effect's kernel on an image that the caller owns: the image is replaced by the result, or kept
// when the kernel has none. For preview, build and command lines alike.
ImageHandle ApplyKernel(const Effect& effect, ImageHandle image, const KernelInput& input);

}  // namespace kfx
