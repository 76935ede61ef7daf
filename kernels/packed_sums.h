// SPDX-License-Identifier: MIT
// Averages of up to 257 pixels of a 24-bit picture, two channels in one word.
#pragma once

#include <cstdint>
#include <cstring>

namespace kfx {

constexpr int32_t kMostPackedSamples = 257;  // 257 * 255 fits 16 bits

// A pixel's three bytes. They are read together with the byte before them, not with the byte after them:
// nothing follows the last pixel of a picture, but the image's header stands before the first one.
inline uint32_t PixelBytes(const uint8_t* pixel) {
    uint32_t bytes;
    std::memcpy(&bytes, pixel - 1, sizeof bytes);
    return bytes >> 8;
}

struct PackedSums {
    uint32_t blueRed = 0;
    uint32_t green = 0;

    void Add(uint32_t bytes) {
        blueRed += bytes & 0x00FF00FF;
        green += bytes >> 8 & 255;
    }
};

// 2^32 / count, rounded up, for every count.
struct Reciprocals {
    Reciprocals() {
        for (uint32_t count = 1; count <= kMostPackedSamples; ++count)
            values[count] = (uint64_t{1} << 32) / count + 1;
    }

    // Writes the truncated averages of `count` pixels. Exact: a sum below 2^16 times an excess of at most
    // `count` parts in 2^32 stays below one part in `count`.
    void PutAverages(const PackedSums& sums, int32_t count, uint8_t* out) const {
        const uint64_t reciprocal = values[count];
        out[0] = static_cast<uint8_t>((sums.blueRed & 0xFFFF) * reciprocal >> 32);
        out[1] = static_cast<uint8_t>(sums.green * reciprocal >> 32);
        out[2] = static_cast<uint8_t>((sums.blueRed >> 16) * reciprocal >> 32);
    }

    uint64_t values[kMostPackedSamples + 1] = {};
};

}  // namespace kfx
