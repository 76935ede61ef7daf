// SPDX-License-Identifier: MIT
// Which pixels of two rows are the same, for supercompression.
#pragma once

#include <cstdint>

namespace kfx {

// Sets the mask bit of each of the `width` 24-bit pixels that is equal in both rows. The leftmost pixel has
// the highest bit. The caller zeroes the mask row before.
void MarkEqualPixels(const uint8_t* a, const uint8_t* b, int32_t width, uint8_t* mask);

}  // namespace kfx
