// SPDX-License-Identifier: MIT
#include "media/png_chunks.h"

#include <libdeflate.h>

namespace kfx {
namespace {

constexpr size_t kChunkFrame = 12;  // length, name, checksum
constexpr uint8_t kSignature[kPngSignatureSize] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};

}  // namespace

uint32_t BigWord32(const uint8_t* bytes) { return BigWord16(bytes) << 16 | BigWord16(bytes + 2); }

uint32_t BigWord16(const uint8_t* bytes) { return static_cast<uint32_t>(bytes[0] << 8 | bytes[1]); }

void PutBigWord32(std::vector<uint8_t>* bytes, uint32_t value) {
    PutBigWord16(bytes, value >> 16);
    PutBigWord16(bytes, value & 0xFFFF);
}

void PutBigWord16(std::vector<uint8_t>* bytes, uint32_t value) {
    bytes->push_back(static_cast<uint8_t>(value >> 8));
    bytes->push_back(static_cast<uint8_t>(value));
}

bool NextPngChunk(const uint8_t* data, size_t size, size_t* at, PngChunk* chunk) {
    if (size < *at || size - *at < kChunkFrame) return false;
    const uint8_t* start = data + *at;
    const uint32_t length = BigWord32(start);
    if (length > size - *at - kChunkFrame) return false;
    *chunk = {.name = BigWord32(start + 4),
              .data = start + 8,
              .size = length,
              .whole = start,
              .wholeSize = kChunkFrame + length};
    *at += chunk->wholeSize;
    return true;
}

bool IsPngChunkWhole(const PngChunk& chunk) {
    return libdeflate_crc32(0, chunk.whole + 4, chunk.size + 4) == BigWord32(chunk.data + chunk.size);
}

void PutPngSignature(std::vector<uint8_t>* file) {
    file->insert(file->end(), kSignature, kSignature + kPngSignatureSize);
}

void PutPngChunk(std::vector<uint8_t>* file, uint32_t name, const std::vector<uint8_t>& data) {
    PutBigWord32(file, static_cast<uint32_t>(data.size()));
    const size_t start = file->size();
    PutBigWord32(file, name);
    file->insert(file->end(), data.begin(), data.end());
    PutBigWord32(file, libdeflate_crc32(0, file->data() + start, file->size() - start));
}

}  // namespace kfx
