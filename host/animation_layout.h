// SPDX-License-Identifier: MIT
// What the reader and the writer of an animation block agree on; docs/host-interface.md shows the whole
// layout.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace kfx {

constexpr size_t kAnimationHeaderBytes = 38;  // the global palette follows
constexpr size_t kImageBlockBytes = 40;       // up to the last frame field; the bitmap follows
constexpr size_t kBitmapHeaderBytes = 40;     // of a device-independent bitmap
constexpr uint8_t kFlagGlobalPalette = 4;
constexpr uint8_t kFlagBackground = 16;

// Numbers lie in the block without regard to alignment, little-endian as the processor's own.
inline uint32_t Word32(const uint8_t* bytes) {
    uint32_t value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

inline uint16_t Word16(const uint8_t* bytes) {
    uint16_t value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

}  // namespace kfx
