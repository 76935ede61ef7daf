// SPDX-License-Identifier: MIT
// Pixels of a converted frame that become the palette entry kept for transparency or background.
#pragma once

#include <cstdint>

#include "framework/working_image.h"

namespace kfx {

// Gives every pixel of the converted image whose full colour is the background colour (its low 24 bits, red
// lowest) the index. Both images have the same size. False: one of them could not be locked; nothing is
// marked then.
bool MarkBackground(ImageHandle full, uint32_t background, ImageHandle converted, int32_t index);

// Gives every pixel that a change mask calls unchanged the index; a picture may reach beyond its mask. False:
// one of them could not be locked.
bool MarkUnchanged(ImageHandle mask, ImageHandle converted, int32_t index);

}  // namespace kfx
