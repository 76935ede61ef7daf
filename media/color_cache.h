// SPDX-License-Identifier: MIT
// What is known of colours that occurred lately: most pixels then need no search among all colours.
#pragma once

#include <cstdint>

namespace kfx {

struct ColorCache {
    struct Slot {
        uint32_t color = UINT32_MAX;  // none
        uint32_t value = 0;           // whatever the user keeps for the colour
    };
    static constexpr unsigned kBits = 10;
    Slot slots[1u << kBits];
};

// Where the colour (below 2^25) is when the cache has it: its `color` says so. The user replaces it
// otherwise.
inline ColorCache::Slot* SlotOf(ColorCache* cache, uint32_t color) {
    constexpr uint32_t kGoldenRatio = 0x9E3779B1;  // of 2^32; spreads neighbouring colours
    return &cache->slots[color * kGoldenRatio >> (32 - ColorCache::kBits)];
}

}  // namespace kfx
