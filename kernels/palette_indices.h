// SPDX-License-Identifier: MIT
// Palette indices in rows of 1, 4 and 8 bits a pixel: the leftmost pixel stands in the highest bits.
#pragma once

#include <cstdint>

namespace kfx {

// Writes the palette index of column x into a zeroed row.
template <int kBits>
inline void PutIndex(uint8_t* row, int32_t x, uint32_t index) {
    if constexpr (kBits == 8)
        row[x] = static_cast<uint8_t>(index);
    else if constexpr (kBits == 4)
        row[x >> 1] |= static_cast<uint8_t>(x & 1 ? index : index << 4);
    else
        row[x >> 3] |= static_cast<uint8_t>(index << (7 - (x & 7)));
}

// The index in column x of a row of 1, 4 or 8 bits.
inline uint8_t GetIndex(const uint8_t* row, int32_t bitCount, int32_t x) {
    if (bitCount == 8) return row[x];
    if (bitCount == 4) return static_cast<uint8_t>(x & 1 ? row[x >> 1] & 15 : row[x >> 1] >> 4);
    return static_cast<uint8_t>(row[x >> 3] >> (7 - (x & 7)) & 1);
}

}  // namespace kfx
