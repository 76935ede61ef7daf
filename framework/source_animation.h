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

// Appends every frame to the list. False: no source, a malformed block or memory ran out; what was appended
// stays.
bool DecodeAllFrames(FrameList* list);

// What geometric effects show where they sample outside the picture (0x00BBGGRR): the local background colour
// when the user has switched it on, else the source's own background, else mid-grey.
uint32_t BackgroundColor();

}  // namespace kfx
