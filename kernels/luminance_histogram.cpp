// SPDX-License-Identifier: MIT
#include "kernels/luminance_histogram.h"

#include "framework/cpu.h"

namespace kfx {
namespace {

// Bytes that are handled at a time: whole pixels, whole registers.
constexpr size_t kChunk = 96 * 16;

// Computes for each byte the luminance of a pixel that starts there. Pixels start only at every third byte,
// so only every third result is used, but in this form the compiler vectorises the loop. `shares` are each
// channel's weight, repeated. Dividing by 255 is exact as (n + 1 + n / 256) / 256 for every product n of two
// bytes.
KFX_INLINE void FindLevels(const uint8_t* from, size_t count, const uint8_t shares[96],
                           uint8_t* __restrict levels) {
    uint8_t parts[kChunk + 2];
    const auto divide = [](uint8_t c, uint8_t share) {
        const auto product = static_cast<uint16_t>(c * share);
        return static_cast<uint8_t>(static_cast<uint16_t>(product + 1 + (product >> 8)) >> 8);
    };
    size_t i = 0;
    for (; i + 96 <= count; i += 96)
        for (size_t k = 0; k < 96; ++k) parts[i + k] = divide(from[i + k], shares[k]);
    for (size_t k = 0; i + k < count; ++k) parts[i + k] = divide(from[i + k], shares[k]);
    parts[count] = parts[count + 1] = 0;
    for (i = 0; i < count; ++i) levels[i] = static_cast<uint8_t>(parts[i] + parts[i + 1] + parts[i + 2]);
}

}  // namespace

void CountLuminance(const WorkingImage* image, LuminanceHistogram* histogram) {
    // Four histograms are used in turn. Neighbouring pixels are often alike, and each increment of one
    // counter would have to wait for the increment before.
    uint32_t counts[4][kLuminanceLevels] = {};
    uint8_t shares[96], levels[kChunk];
    for (size_t k = 0; k < 96; k += 3) {
        shares[k] = 28;  // blue
        shares[k + 1] = 150;
        shares[k + 2] = 77;
    }
    const size_t rowBytes = 3 * static_cast<size_t>(image->width);
    const auto findLevels = Fastest<FindLevels>();
    for (int32_t r = 0; r < image->height; ++r) {
        const uint8_t* row = StoredRow(image, r);
        for (size_t start = 0; start < rowBytes; start += kChunk) {
            const size_t count = rowBytes - start < kChunk ? rowBytes - start : kChunk;
            findLevels(row + start, count, shares, levels);
            size_t i = 0;
            for (; i + 12 <= count; i += 12)
                for (size_t k = 0; k < 4; ++k) ++counts[k][levels[i + 3 * k]];
            for (; i < count; i += 3) ++counts[0][levels[i]];
        }
    }
    for (int32_t level = 0; level < kLuminanceLevels; ++level)
        for (const auto& part : counts) histogram->counts[level] += part[level];
    histogram->pixels += static_cast<uint64_t>(image->width) * static_cast<uint64_t>(image->height);
}

void FindLuminanceRange(const LuminanceHistogram& histogram, uint64_t threshold, int32_t* low,
                        int32_t* high) {
    uint64_t sum = 0;
    for (*low = 0; *low < kLuminanceLevels - 1; ++*low) {
        sum += histogram.counts[*low];
        if (sum > threshold) break;
    }
    sum = 0;
    for (*high = kLuminanceLevels - 1; *high > 0; --*high) {
        sum += histogram.counts[*high];
        if (sum > threshold) break;
    }
}

}  // namespace kfx
