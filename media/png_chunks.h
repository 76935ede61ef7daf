// SPDX-License-Identifier: MIT
// The chunks that PNG files consist of.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kfx {

constexpr size_t kPngSignatureSize = 8;

struct PngChunk {
    uint32_t name = 0;              // four letters, the first one highest
    const uint8_t* data = nullptr;  // in the file
    uint32_t size = 0;
    const uint8_t* whole = nullptr;  // with length, name and checksum
    size_t wholeSize = 0;
};

constexpr uint32_t PngName(const char (&letters)[5]) {
    return static_cast<uint32_t>(static_cast<uint8_t>(letters[0])) << 24 |
           static_cast<uint32_t>(static_cast<uint8_t>(letters[1])) << 16 |
           static_cast<uint32_t>(static_cast<uint8_t>(letters[2])) << 8 |
           static_cast<uint32_t>(static_cast<uint8_t>(letters[3]));
}

uint32_t BigWord32(const uint8_t* bytes);
uint32_t BigWord16(const uint8_t* bytes);
void PutBigWord32(std::vector<uint8_t>* bytes, uint32_t value);
void PutBigWord16(std::vector<uint8_t>* bytes, uint32_t value);

// The chunk at `*at`, which moves behind it; false at the end of the file and when the chunk is cut. The
// checksum is not looked at.
bool NextPngChunk(const uint8_t* data, size_t size, size_t* at, PngChunk* chunk);

// Whether the chunk's checksum is that of its content.
bool IsPngChunkWhole(const PngChunk& chunk);

void PutPngSignature(std::vector<uint8_t>* file);

// Appends a chunk with its checksum.
void PutPngChunk(std::vector<uint8_t>* file, uint32_t name, const std::vector<uint8_t>& data);

}  // namespace kfx
