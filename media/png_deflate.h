// SPDX-License-Identifier: MIT
// Compressed data of PNG chunks (zlib streams): whole ones by libdeflate, which is faster, and piece by piece
// by zlib. All functions throw std::bad_alloc when there is no memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace kfx {

// No stream unpacks to more than so many times its size.
constexpr size_t kMostUnpacked = 1032;

// A stream as it stands in memory: in one part or in several ones, not empty.
struct PackedPart {
    const uint8_t* data;
    size_t size;
};
using PackedParts = std::vector<PackedPart>;

// Unpacks a stream that has to become exactly `outSize` bytes; false when it is damaged or of another size.
bool UnpackWhole(const PackedParts& parts, uint8_t* out, size_t outSize);

// Unpacks a stream piece by piece.
struct Unpacker;

struct UnpackerDeleter {
    void operator()(Unpacker* unpacker) const;
};
using UnpackerOwner = std::unique_ptr<Unpacker, UnpackerDeleter>;

// `parts` must outlive the unpacker.
UnpackerOwner MakeUnpacker(const PackedParts& parts);

// The next `size` bytes; false when the stream is damaged or ends before.
bool UnpackNext(Unpacker* unpacker, uint8_t* out, size_t size);

// Whether the stream ends here, undamaged.
bool EndsUnpacked(Unpacker* unpacker);

// Unpacks a stream of unknown size into *out; false when it is damaged or becomes more than `limit` bytes.
bool UnpackUpTo(const uint8_t* data, size_t size, size_t limit, std::vector<uint8_t>* out);

constexpr int kFastestPacking = 1;
constexpr int kSmallestPacking = 12;

// Packs a stream; `level` goes from kFastestPacking to kSmallestPacking.
std::vector<uint8_t> Pack(const uint8_t* data, size_t size, int level);

}  // namespace kfx
