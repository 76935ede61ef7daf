// SPDX-License-Identifier: MIT
// Channels of a pixel inverted and put into another order.
#pragma once

#include <cstdint>

namespace kfx {

// Writes `width` 24-bit pixels: channel i of a result is byte pattern[i] of the source pixel, where byte 0 is
// blue, 1 green and 2 red; inverted when `invert`. The rows do not overlap.
void ArrangeRow(const uint8_t* from, int32_t width, bool invert, const uint8_t pattern[3], uint8_t* to);

}  // namespace kfx
