// SPDX-License-Identifier: MIT
// The source animation that the host handed over, and its frames as 24-bit working images.
#pragma once

#include <cstdint>

#include "framework/frame_list.h"
#include "framework/working_image.h"

namespace kfx {

// The current source animation's block, or null. The window (or a command line in its place) sets and frees
// it; this folder and the builder only look.
extern MemoryHandle sourceAnimation;

// The first frame as a new 24-bit image, the caller's to free. Null: no source, no sound frame, or memory ran
// out.
ImageHandle FetchFirstFrame();

// How reading the source ended.
enum class DecodeResult {
    Whole,      // every frame stands in the list; there may be none
    Malformed,  // no source, no animation, or a malformed frame: the frames before it stand in the list
    Refused,    // memory was refused or the source could not be locked: frames are missing from the list
};

// Appends every frame to the list. What was appended stays, however it ends.
DecodeResult DecodeAllFrames(FrameList* list);

// What geometric effects show where they sample outside the picture (0x00BBGGRR): the local background colour
// when the user has switched it on, else the source's own background, else mid-grey. False: the source could
// not be locked, so nobody knows.
bool ReadBackgroundColor(uint32_t* color);

}  // namespace kfx
