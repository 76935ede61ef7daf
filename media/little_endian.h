// SPDX-License-Identifier: MIT
// Numbers in files whose lowest byte comes first.
#pragma once

#include <cstdint>

namespace kfx {

inline uint32_t LittleWord16(const uint8_t* bytes) { return bytes[0] | static_cast<uint32_t>(bytes[1]) << 8; }

inline uint32_t LittleWord32(const uint8_t* bytes) {
    return LittleWord16(bytes) | LittleWord16(bytes + 2) << 16;
}

}  // namespace kfx
