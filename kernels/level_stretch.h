// SPDX-License-Identifier: MIT
// Stretches a range of levels over all levels, for Normalize.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kfx {

// How levels are mapped: by a table, and, if `computed`, by a multiplication that gives the same results.
struct LevelStretch {
    uint8_t table[256];
    bool computed;
    uint8_t low;
    uint8_t high;
    uint16_t added;  // 0 or 1: together with `factor` and `shift` the division by high - low
    uint16_t factor;
    uint16_t shift;
};

// Levels below `low` become 0, levels above `high` 255, and those between (v - low) * 254 / (high - low).
// `low` is below `high`.
LevelStretch MakeLevelStretch(int32_t low, int32_t high);

// Maps `count` bytes; the rows do not overlap.
void StretchBytes(const uint8_t* from, size_t count, const LevelStretch& stretch, uint8_t* to);

}  // namespace kfx
