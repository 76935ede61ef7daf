// SPDX-License-Identifier: MIT
// The host's animation block, from the validating walk to decoded frames.
#include <cstdlib>
#include <cstring>

#include "framework/frame_list.h"
#include "framework/memory_guards.h"
#include "framework/movable_memory.h"
#include "framework/source_animation.h"
#include "host/animation_block.h"
#include "tests/fuzz/block_changes.h"

extern "C" {
int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);
size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize, unsigned seed);
}

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace kfx;
    const bool sound = IsAnimation(data, size);
    if (size == 0) return 0;

    // Frames are decoded from blocks that the walk refuses as well: the decoder must hold by itself.
    const MemoryOwner source(AllocateMemory(size));
    std::memcpy(LockMemory(source.memory), data, size);
    UnlockMemory(source.memory);
    FreeMemory(FetchFirstFrame(source.memory));
    uint32_t background;
    if (!ReadBackgroundColor(source.memory, &background)) std::abort();
    FrameList frames = {};
    const DecodeResult decoded = DecodeAllFrames(source.memory, &frames);
    if (sound && decoded != DecodeResult::Whole) std::abort();
    FreeFrames(&frames);
    return 0;
}

size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize, unsigned seed) {
    return kfx::test::MutateBlock(data, size, maxSize, seed, 0);
}
