// SPDX-License-Identifier: MIT
// The filters of PNG rows: each byte is stored as its difference from a prediction by its neighbours.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kfx {

enum PngFilter : uint8_t {
    kFilterNone = 0,
    kFilterSub = 1,    // from the pixel on the left
    kFilterUp = 2,     // from the pixel above
    kFilterMean = 3,   // from the mean of both
    kFilterPaeth = 4,  // from left, above or above left, whichever is nearest to left + above - above left
};

constexpr int kPngFilterCount = 5;

// Turns `size` differences at `row` back into bytes. `above` is the row above, all 0 for the first one; a
// pixel has `step` bytes: 1, 2, 3, 4, 6 or 8, and `size` is a multiple of it. One byte behind each row can be
// read, too. False when there is no such filter.
bool UndoPngFilter(int filter, const uint8_t* above, size_t size, int step, uint8_t* row);

// The opposite: the differences of `row` into `filtered`.
void ApplyPngFilter(int filter, const uint8_t* row, const uint8_t* above, size_t size, int step,
                    uint8_t* filtered);

}  // namespace kfx
