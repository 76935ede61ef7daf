// SPDX-License-Identifier: MIT
#include <algorithm>
#include <random>

#include "tests/fuzz/block_changes.h"

// libFuzzer's; where a target is linked without it, replay_main.cpp has another one.
extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t maxSize);

namespace kfx::test {

size_t MutateBlock(uint8_t* data, size_t size, size_t maxSize, unsigned seed, size_t prefix) {
    std::minstd_rand random(seed);
    if (size <= prefix || random() % 2 == 0) return LLVMFuzzerMutate(data, size, maxSize);
    std::vector<uint8_t> block(data + prefix, data + size);
    for (size_t left = 1 + random() % 3; left > 0 && !block.empty(); --left) {
        if (random() % 16 == 0) {
            block.resize(random() % block.size());
            continue;
        }
        const std::vector<BlockChange> changes = BlockChanges(block);
        if (!changes.empty()) block = ChangedBlock(block, changes[random() % changes.size()]);
    }
    block.resize(std::min(block.size(), maxSize - prefix));
    std::copy(block.begin(), block.end(), data + prefix);
    return prefix + block.size();
}

}  // namespace kfx::test
