// SPDX-License-Identifier: MIT
// The source animation that the host handed over, and its frames as 24-bit working images. `source` is the
// animation's block, or null without one. It is only read and stays the caller's.
#pragma once

#include <cstdint>

#include "framework/frame_list.h"
#include "framework/memory_guards.h"
#include "framework/working_image.h"
#include "host/animation_block.h"

namespace kfx {

// Whether the block, which may be null, is an animation and whole; see IsAnimation. False as well when it
// cannot be locked.
bool IsSoundAnimation(MemoryHandle block);

// What the source is, as far as it can be told.
enum class SourceState {
    Animation,
    None,     // no source, or no animation
    Refused,  // it could not be locked or its size not be read: unknown
};

// Reads the header of the source, which `lock` holds; nothing is written to it unless the answer is
// Animation.
SourceState ReadSourceHeader(const MemoryLock& lock, AnimationHeader* header);

// The first frame as a new 24-bit image, the caller's to free. Null: no source, no sound frame, or memory ran
// out.
ImageHandle FetchFirstFrame(MemoryHandle source);

// How reading the source ended.
enum class DecodeResult {
    Whole,       // every frame stands in the list; there may be none
    None,        // no source, no animation, or one whose first frame is malformed: there are no frames
    Incomplete,  // memory was refused, or a later frame is malformed: frames are missing from the list
};

// Appends every frame to the list. What was appended stays, however it ends.
DecodeResult DecodeAllFrames(MemoryHandle source, FrameList* list);

// What geometric effects show where they sample outside the picture (0x00BBGGRR): the local background colour
// when the user has switched it on, else the source's own background, else mid-grey. False: the source could
// not be read, so the colour is unknown.
bool ReadBackgroundColor(MemoryHandle source, uint32_t* color);

}  // namespace kfx
