// SPDX-License-Identifier: MIT
#include "bench/whole_build.h"

#include <cstring>

#include "framework/memory_guards.h"

namespace kfx::bench {
namespace {

// Stands in the place of the source animation.
struct GivenFrames {
    const FrameList* list;
};

// An effect that leaves the given frames as they are.
int32_t CopyFrames(EffectBuildContext* context) {
    GivenFrames given = {};
    {
        const MemoryLock source(context->source);
        if (!source) return 0;
        std::memcpy(&given, source.address, sizeof given);
    }
    for (int32_t i = 0; i < given.list->count; ++i) {
        FrameEntry entry = {};
        if (!GetFrame(*given.list, i, &entry)) return 0;
        const ImageLock lock(entry.image);
        entry.image = DuplicateImage(lock.image);
        if (!AppendFrame(context->frames, entry)) {
            FreeMemory(entry.image);
            return 0;
        }
    }
    return 1;
}

uint64_t AcceptAll(uint64_t, uint32_t, uint64_t, uint64_t) { return 1; }

}  // namespace

bool BuildFrames(const FrameList& frames, const BuildOptions& options) {
    const GivenFrames given = {&frames};
    const MemoryOwner source(AllocateMemory(sizeof given));
    {
        const MemoryLock lock(source.memory);
        if (!lock) return false;
        std::memcpy(lock.address, &given, sizeof given);
    }
    EffectDescriptor effect = {};
    effect.build = CopyFrames;
    HostContext host = {};
    host.callback = AcceptAll;
    const BuildEnvironment environment = {.window = nullptr,
                                          .host = &host,
                                          .source = source.memory,
                                          .effect = &effect,
                                          .showMessage = [](void*, BuildMessage) {}};
    return RunBuild(environment, options) != 0;
}

BuildOptions ComputedPaletteOptions() {
    BuildOptions options = {};
    options.customPalette = true;
    return options;
}

}  // namespace kfx::bench
