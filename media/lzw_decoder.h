// SPDX-License-Identifier: MIT
// The image data of GIF files, decoded. They are given as they stand in the file: the minimum code size, and
// behind it the codes in blocks, each of which begins with its length.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kfx {

// At most so many pixels are in image data of so many bytes.
size_t MostLzwPixels(size_t bytes);

// Decodes the image data at `data` into `pixels`, which has room for `count`. Returns how many pixels there
// are: fewer than `count` when the end code, the end of the data or a code that cannot be comes before. A
// file that ends inside a block has the part of the block that is there.
size_t DecodeLzw(const uint8_t* data, size_t size, uint8_t* pixels, size_t count);

}  // namespace kfx
