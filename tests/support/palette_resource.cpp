// SPDX-License-Identifier: MIT
#include "tests/support/palette_resource.h"

#include <cstring>

namespace kfx::test {

std::array<uint8_t, kPaletteResourceBytes> MakePaletteResource(const PaletteTable& palette) {
    std::array<uint8_t, kPaletteResourceBytes> bytes = {};
    std::memcpy(&bytes[0], "QRVNRSRC", 8);
    std::memcpy(&bytes[8], "256 colour palette", 18);  // of 64 bytes
    bytes[73] = 1;                                     // one chunk
    std::memcpy(&bytes[75], "CMAP", 4);
    bytes[79] = 1;
    bytes[83] = kPaletteBytes & 255;
    bytes[84] = kPaletteBytes >> 8;
    std::memcpy(&bytes[85], palette.data(), kPaletteBytes);
    return bytes;
}

}  // namespace kfx::test
