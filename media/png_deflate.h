// SPDX-License-Identifier: MIT
// Compressed data of PNG chunks (zlib streams), by libdeflate. All functions throw std::bad_alloc when there
// is no memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kfx {

// No stream unpacks to more than so many times its size.
constexpr size_t kMostUnpacked = 1032;

// Unpacks a stream that has to become exactly `outSize` bytes; false when it is damaged or of another size.
bool UnpackWhole(const uint8_t* data, size_t size, uint8_t* out, size_t outSize);

// Unpacks a stream of unknown size into *out; false when it is damaged or becomes more than `limit` bytes.
bool UnpackUpTo(const uint8_t* data, size_t size, size_t limit, std::vector<uint8_t>* out);

constexpr int kFastestPacking = 1;
constexpr int kSmallestPacking = 12;

// Packs a stream; `level` goes from kFastestPacking to kSmallestPacking.
std::vector<uint8_t> Pack(const uint8_t* data, size_t size, int level);

}  // namespace kfx
