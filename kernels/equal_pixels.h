// SPDX-License-Identifier: MIT
// Which pixels of two rows are the same, for supercompression.
#pragma once

#include <cstdint>

namespace kfx {

// Sets the mask bits of the equal ones among `width` 24-bit pixels, the leftmost pixel's in the highest bit.
// The mask row starts zeroed.
void MarkEqualPixels(const uint8_t* a, const uint8_t* b, int32_t width, uint8_t* mask);

}  // namespace kfx
