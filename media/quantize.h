// SPDX-License-Identifier: MIT
// Reducing one RGBA picture to a palette of its own, for GIF frames with local palettes.
#pragma once

#include <cstdint>

#include "media/animation_writer.h"

namespace kfx {

// The pixels of a GIF are either opaque or not there; they are opaque from this alpha on.
constexpr uint8_t kOpaqueFrom = 128;

// Fills the frame's indices, palette and transparent index from a picture of width * height RGBA pixels.
// The palette has at most `maxColors` (2 to 256) entries; pixels with an alpha below kOpaqueFrom share one of
// them, the transparent index. Pictures with few enough colours keep them exactly. For others the colour
// space is divided at the mean of the channel with the largest squared error, again and again (Wan, Wong and
// Prusinkiewicz, "An algorithm for multidimensional data clustering", ACM TOMS 14, 1988), and each colour
// goes to its nearest entry, without dithering.
void QuantizeFrame(const uint8_t* rgba, int width, int height, int maxColors, GifFrame* frame);

// The same for a picture whose colours, with the entry for transparency, fit 256 entries. Returns false, and
// leaves the frame as it was, when they do not.
bool IndexFrame(const uint8_t* rgba, int width, int height, GifFrame* frame);

}  // namespace kfx
