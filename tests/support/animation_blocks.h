// SPDX-License-Identifier: MIT
// Builds the block in which a host hands over an animation.
#pragma once

#include <cstdint>
#include <vector>

#include "framework/working_image.h"

namespace kfx::test {

struct BlockFrame {
    std::vector<uint8_t> bitmap;  // header, colour table, rows: as BytesOf() gives them
    uint32_t fields[4] = {0, 0, 7, 0};
};

struct BlockOptions {
    uint32_t width = 0;  // 0: the first frame's
    uint32_t height = 0;
    bool hasBackground = false;
    uint32_t background = 0;
    std::vector<uint8_t> globalPalette;  // red-green-blue triples; empty: none
};

std::vector<uint8_t> MakeAnimationBlock(const std::vector<BlockFrame>& frames,
                                        const BlockOptions& options = {});

// A copy of the bytes in movable memory, as the host would hand them over.
MemoryHandle MakeMemory(const std::vector<uint8_t>& bytes);

// The bytes of a test data file, named from the root of the sources ("tests/data/..."); fails the test when
// missing.
std::vector<uint8_t> ReadTestFile(const char* path);

}  // namespace kfx::test
