// SPDX-License-Identifier: MIT
#include "host/animation_block.h"

#include <cstring>

#include "host/animation_layout.h"

namespace kfx {
namespace {

bool HasTag(const uint8_t* bytes, const char* tag) { return std::memcmp(bytes, tag, 4) == 0; }

// Whether `count` bytes from `offset` lie inside `size` bytes, without an overflow.
bool Fits(size_t size, size_t offset, size_t count) { return offset <= size && count <= size - offset; }

// Reads the bitmap of `available` bytes at `bitmap`.
bool ReadBitmap(const uint8_t* bitmap, size_t available, AnimationFrame* frame) {
    if (available < kBitmapHeaderBytes || Word32(bitmap) != kBitmapHeaderBytes) return false;
    const auto width = static_cast<int32_t>(Word32(bitmap + 4));
    const auto height = static_cast<int32_t>(Word32(bitmap + 8));
    const int32_t bitCount = Word16(bitmap + 14);
    const uint32_t compression = Word32(bitmap + 16);
    if (width < 1 || height < 1 || compression != 0) return false;
    if (bitCount != 1 && bitCount != 4 && bitCount != 8 && bitCount != 24 && bitCount != 32) return false;

    // 2^31 pixels of 32 bits a row and 2^31 rows stay below 2^64.
    const uint64_t stride = (static_cast<uint64_t>(width) * static_cast<uint64_t>(bitCount) + 31) / 32 * 4;
    const uint64_t rowBytes = stride * static_cast<uint64_t>(height);
    const size_t tableBytes = bitCount <= 8 ? size_t{4} << bitCount : 0;
    const size_t rest = available - kBitmapHeaderBytes;
    if (tableBytes > rest || rowBytes > rest - tableBytes) return false;

    frame->width = width;
    frame->height = height;
    frame->bitCount = bitCount;
    frame->colorTable = tableBytes ? bitmap + kBitmapHeaderBytes : nullptr;
    frame->rows = bitmap + kBitmapHeaderBytes + tableBytes;
    return true;
}

}  // namespace

bool ReadAnimationHeader(const void* block, size_t size, AnimationHeader* header) {
    const auto* bytes = static_cast<const uint8_t*>(block);
    if (!bytes || size < kAnimationHeaderBytes || !HasTag(bytes, "oMNA")) return false;
    AnimationHeader read = {};
    read.bytes = bytes;
    read.size = size;
    read.firstBlock = Word32(bytes + 4);
    read.frameCount = Word32(bytes + 16);
    read.width = Word32(bytes + 24);
    read.height = Word32(bytes + 28);
    read.hasBackground = (bytes[12] & kFlagBackground) != 0;
    read.background = Word32(bytes + 20);
    if (read.firstBlock < kAnimationHeaderBytes || read.firstBlock > size) return false;
    // The window shows the size as signed numbers and the scaler multiplies by 100: no real picture is
    // larger.
    if (read.width > INT32_MAX || read.height > INT32_MAX) return false;
    if (bytes[12] & kFlagGlobalPalette) {
        const uint32_t count = Word16(bytes + 36);
        read.globalColors = count < 256 ? count : 256;
        read.globalPalette = bytes + kAnimationHeaderBytes;
        if (!Fits(size, kAnimationHeaderBytes, size_t{3} * read.globalColors)) return false;
    }
    *header = read;
    return true;
}

FrameStep ReadAnimationFrame(const AnimationHeader& header, size_t* offset, AnimationFrame* frame) {
    if (!Fits(header.size, *offset, 4)) return FrameStep::Malformed;
    const uint8_t* block = header.bytes + *offset;
    if (HasTag(block, "xMNA")) return FrameStep::End;
    if (!HasTag(block, "eMNA") || !Fits(header.size, *offset, kImageBlockBytes)) return FrameStep::Malformed;
    const size_t bitmapOffset = Word32(block + 4);
    const size_t bitmapBytes = Word32(block + 16);
    const size_t rest = header.size - *offset;
    if (bitmapOffset < kImageBlockBytes || !Fits(rest, bitmapOffset, bitmapBytes))
        return FrameStep::Malformed;
    AnimationFrame read = {};
    if (!ReadBitmap(block + bitmapOffset, bitmapBytes, &read)) return FrameStep::Malformed;
    for (size_t i = 0; i < 4; ++i) read.fields[i] = static_cast<int32_t>(Word32(block + 24 + 4 * i));
    *frame = read;
    *offset += bitmapOffset + bitmapBytes;
    return FrameStep::Frame;
}

bool IsAnimation(const void* block, size_t size) {
    AnimationHeader header;
    if (!ReadAnimationHeader(block, size, &header)) return false;
    size_t offset = header.firstBlock;
    AnimationFrame frame;
    for (uint32_t i = 0; i < header.frameCount; ++i) {
        const FrameStep step = ReadAnimationFrame(header, &offset, &frame);
        if (step != FrameStep::Frame) return step == FrameStep::End;
    }
    return ReadAnimationFrame(header, &offset, &frame) == FrameStep::End;
}

}  // namespace kfx
