// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "framework/frame_list.h"

namespace kfx {

// Finds one palette for all frames (24-bit images, left unchanged). `*colors` is the most colours wanted (0,
// or more than 256, means 256) and becomes the number found; `palette` gets 256 red-green-blue triples, black
// beyond them. Frames with no more colours than wanted give exactly those, in order of first appearance; more
// are reduced by an adaptive octree (see color_cube.h). False: no list, a frame that is not 24-bit or cannot
// be locked, or memory ran out.
bool Quantize(uint32_t* colors, uint8_t* palette, const FrameList& frames);

}  // namespace kfx
