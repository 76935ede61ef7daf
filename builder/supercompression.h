// SPDX-License-Identifier: MIT
// Supercompression: a frame carries only the pixels that change what the viewer sees.
#pragma once

#include "framework/frame_list.h"

namespace kfx {

// A new 1-bit mask of the composite's size: bit 1 where the frame shows what the composite shows already. The
// composite is brought up to date. A frame smaller than the composite counts as changed outside its own area
// (white in the composite); of a larger one only the composite's area is looked at. Null: memory ran out, or
// an image could not be locked.
ImageHandle UpdateComposite(ImageHandle composite, ImageHandle frame);

}  // namespace kfx
