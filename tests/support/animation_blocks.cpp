// SPDX-License-Identifier: MIT
#include "tests/support/animation_blocks.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>

#include "framework/memory_guards.h"

namespace kfx::test {
namespace {

void Put32(std::vector<uint8_t>* bytes, size_t offset, size_t value) {
    const auto word = static_cast<uint32_t>(value);
    std::memcpy(bytes->data() + offset, &word, sizeof word);
}

}  // namespace

std::vector<uint8_t> MakeAnimationBlock(const std::vector<BlockFrame>& frames, const BlockOptions& options) {
    constexpr size_t kHeader = 808;  // 38 bytes and room for 256 colours, rounded up
    constexpr size_t kImageHeader = 40;
    std::vector<uint8_t> block(kHeader);
    std::memcpy(block.data(), "oMNA", 4);
    Put32(&block, 4, kHeader);
    block[12] =
        static_cast<uint8_t>((options.globalPalette.empty() ? 0 : 4) | (options.hasBackground ? 16 : 0));
    Put32(&block, 16, frames.size());
    Put32(&block, 20, options.background);
    uint32_t width = options.width;
    uint32_t height = options.height;
    if (!width && !frames.empty()) std::memcpy(&width, frames[0].bitmap.data() + 4, 4);
    if (!height && !frames.empty()) std::memcpy(&height, frames[0].bitmap.data() + 8, 4);
    Put32(&block, 24, width);
    Put32(&block, 28, height);
    const size_t colors = options.globalPalette.size() / 3;
    block[36] = static_cast<uint8_t>(colors);
    block[37] = static_cast<uint8_t>(colors >> 8);
    if (colors > 256) block.resize(38 + 3 * colors), Put32(&block, 4, block.size());
    if (colors) std::memcpy(block.data() + 38, options.globalPalette.data(), 3 * colors);
    for (const BlockFrame& frame : frames) {
        const size_t start = block.size();
        block.resize(start + kImageHeader);
        std::memcpy(block.data() + start, "eMNA", 4);
        Put32(&block, start + 4, kImageHeader);
        Put32(&block, start + 16, frame.bitmap.size());
        for (size_t i = 0; i < 4; ++i) Put32(&block, start + 24 + 4 * i, frame.fields[i]);
        block.insert(block.end(), frame.bitmap.begin(), frame.bitmap.end());
    }
    const char end[] = {'x', 'M', 'N', 'A'};
    block.insert(block.end(), end, end + 4);
    return block;
}

MemoryHandle MakeMemory(const std::vector<uint8_t>& bytes) {
    const MemoryHandle memory = AllocateMemory(bytes.size());
    const MemoryLock lock(memory);
    if (lock.address) std::memcpy(lock.address, bytes.data(), bytes.size());
    return memory;
}

std::vector<uint8_t> ReadTestFile(const char* path) {
    std::vector<uint8_t> bytes;
    std::FILE* file = std::fopen(path, "rb");
    EXPECT_NE(file, nullptr) << path << " cannot be read; tests run from the root of the sources";
    if (!file) return bytes;
    uint8_t buffer[65536];
    size_t count;
    while ((count = std::fread(buffer, 1, sizeof buffer, file)) > 0)
        bytes.insert(bytes.end(), buffer, buffer + count);
    std::fclose(file);
    return bytes;
}

}  // namespace kfx::test
