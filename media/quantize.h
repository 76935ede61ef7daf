// SPDX-License-Identifier: MIT
// Reducing one RGBA picture to a palette of its own, for GIF frames with local palettes.
#pragma once

#include <cstdint>

#include "media/animation_writer.h"

namespace kfx {

// Fills the frame's indices, palette and transparent index from a picture of width * height RGBA pixels.
// The palette has at most `maxColors` (2 to 256) entries; pixels with an alpha below 128 share one of them,
// the transparent index. Pictures with few enough colours keep them exactly, others get a median cut palette
// (Heckbert, "Color image quantization for frame buffer display", 1982), without dithering.
void QuantizeFrame(const std::uint8_t* rgba, int width, int height, int maxColors, GifFrame* frame);

}  // namespace kfx
