// SPDX-License-Identifier: MIT
// The one reader of the block in which the host hands over an animation. Each offset, size
// and count is checked against the block's real size before it is used. No other code uses an offset of it.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kfx {

// An animation block that has been looked at but not copied; the pointers live as long as the block stays
// locked.
struct AnimationHeader {
    const uint8_t* bytes;
    size_t size;
    size_t firstBlock;  // offset of the first image block
    uint32_t frameCount;
    uint32_t width;
    uint32_t height;
    bool hasBackground;
    uint32_t background;           // 0x00BBGGRR
    uint32_t globalColors;         // 0 without a global palette; at most 256
    const uint8_t* globalPalette;  // globalColors red-green-blue triples
};

// One frame of an animation block.
struct AnimationFrame {
    int32_t width;
    int32_t height;
    int32_t bitCount;           // 1, 4, 8, 24 or 32
    const uint8_t* colorTable;  // 2^bitCount blue-green-red-zero entries; null above 8 bits
    const uint8_t* rows;        // bottom-up, padded to 4 bytes, all inside the block
    int32_t fields[4];          // placement and timing values, in the block's order
};

enum class FrameStep { Frame, End, Malformed };

// Reads the header of a block of `size` bytes. False: no animation, or cut short.
bool ReadAnimationHeader(const void* block, size_t size, AnimationHeader* header);

// Reads the image block at `*offset` (start with header.firstBlock) and moves the offset to the next one. End
// when the closing tag stands there. Nothing is written to `frame` unless the answer is Frame.
FrameStep ReadAnimationFrame(const AnimationHeader& header, size_t* offset, AnimationFrame* frame);

// Whether the whole block is a sound animation: its header, as many image blocks as announced, the closing
// tag (which may come early).
bool IsAnimation(const void* block, size_t size);

}  // namespace kfx
