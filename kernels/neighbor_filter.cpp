// SPDX-License-Identifier: MIT
#include "kernels/neighbor_filter.h"

#include <algorithm>
#include <cstring>

#include "framework/memory_guards.h"

namespace kfx {
namespace {

// The row with its first and last pixel repeated outside.
void PadRow(const uint8_t* row, size_t bytes, uint8_t* padded) {
    std::memcpy(padded, row, 3);
    std::memcpy(padded + 3, row, bytes);
    std::memcpy(padded + 3 + bytes, row + bytes - 3, 3);
}

}  // namespace

ImageHandle FilterNeighbors(ImageHandle source, NeighborRowFilter filter) {
    const ImageLock from(source);
    if (!from || from->bitCount != 24) return nullptr;
    const int32_t height = from->height;
    const size_t bytes = 3 * static_cast<size_t>(from->width);
    const size_t paddedBytes = bytes + 6;
    NewImage to(CreateLike(from.image));
    const Scratch<uint8_t> padded(3 * paddedBytes);
    if (!to || !padded) return nullptr;

    // Three padded rows take turns; picture row y stands in place y % 3.
    const auto place = [&](int32_t y) { return padded.address + static_cast<size_t>(y % 3) * paddedBytes; };
    PadRow(PictureRow(from.image, 0), bytes, place(0));
    for (int32_t y = 0; y < height; ++y) {
        if (y + 1 < height) PadRow(PictureRow(from.image, y + 1), bytes, place(y + 1));
        filter(place(std::max(y - 1, 0)), place(y), place(std::min(y + 1, height - 1)), bytes,
               PictureRow(to.image, y));
    }
    return to.Release();
}

}  // namespace kfx
