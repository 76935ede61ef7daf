// SPDX-License-Identifier: MIT
#include "kernels/level_stretch.h"

#include "framework/cpu.h"

namespace kfx {
namespace {

KFX_INLINE uint8_t MapLevel(uint8_t v, const LevelStretch& stretch) {
    const auto above = static_cast<uint8_t>(v > stretch.low ? v - stretch.low : 0);
    const auto product = static_cast<uint16_t>(above * 254 + stretch.added);
    const auto upper = static_cast<uint16_t>(static_cast<uint32_t>(product) * stretch.factor >> 16);
    return static_cast<uint8_t>(v > stretch.high ? 255 : upper >> stretch.shift);
}

// Finds the multiplication that divides 16-bit numbers by `range`: with a factor of 16 bits either rounding
// the factor up is exact, or rounding it down and adding 1 to the number (A. D. Robison, "N-bit unsigned
// division via N-bit multiply-add", 2005). Comparing all results with the table shows which of the two is
// right, or that neither is, as for powers of two.
void FindDivision(uint32_t range, LevelStretch* stretch) {
    stretch->shift = 0;
    while (range >> (stretch->shift + 1)) ++stretch->shift;
    const uint64_t power = uint64_t{1} << (16 + stretch->shift);
    for (stretch->added = 0; stretch->added < 2; ++stretch->added) {
        const uint64_t factor = stretch->added ? power / range : (power + range - 1) / range;
        stretch->factor = static_cast<uint16_t>(factor);
        stretch->computed = factor < 65536;
        for (int32_t v = 0; v < 256; ++v)
            stretch->computed &= MapLevel(static_cast<uint8_t>(v), *stretch) == stretch->table[v];
        if (stretch->computed) return;
    }
}

KFX_INLINE void MapBytes(const uint8_t* from, size_t count, const LevelStretch& stretch,
                         uint8_t* __restrict to) {
    const LevelStretch constant = stretch;
    for (size_t i = 0; i < count; ++i) to[i] = MapLevel(from[i], constant);
}

}  // namespace

LevelStretch MakeLevelStretch(int32_t low, int32_t high) {
    LevelStretch stretch = {};
    for (int32_t v = 0; v < 256; ++v)
        stretch.table[v] = static_cast<uint8_t>(v < low    ? 0
                                                : v > high ? 255
                                                           : (v - low) * 254 / (high - low));
    stretch.low = static_cast<uint8_t>(low);
    stretch.high = static_cast<uint8_t>(high);
    FindDivision(static_cast<uint32_t>(high - low), &stretch);
    return stretch;
}

void StretchBytes(const uint8_t* from, size_t count, const LevelStretch& stretch, uint8_t* to) {
    if (stretch.computed)
        Fastest<MapBytes>()(from, count, stretch, to);
    else
        for (size_t i = 0; i < count; ++i) to[i] = stretch.table[from[i]];
}

}  // namespace kfx
