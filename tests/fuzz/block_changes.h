// SPDX-License-Identifier: MIT
// What a careless or hostile host may get wrong in an animation block, field by field. The fuzz targets
// change their inputs by it, and a test goes through all of it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace kfx::test {

// `removed` bytes from `offset` on give way to `bytes`.
struct BlockChange {
    size_t offset;
    size_t removed;
    std::vector<uint8_t> bytes;
    std::string what;  // for messages: "image 0: depth = 16"
};

// Every change but cuts, for a block that may be damaged already: its images are found by their tags.
std::vector<BlockChange> BlockChanges(const std::vector<uint8_t>& block);

// The block after a change of its own.
std::vector<uint8_t> ChangedBlock(const std::vector<uint8_t>& block, const BlockChange& change);

// A mutator for inputs that are `prefix` bytes of choices and a block. Half of the time it makes one to three
// of these changes or a cut, otherwise what the fuzzer does with any bytes. As LLVMFuzzerCustomMutator, it
// changes `data` in place and answers the new size, at most `maxSize`.
size_t MutateBlock(uint8_t* data, size_t size, size_t maxSize, unsigned seed, size_t prefix);

}  // namespace kfx::test
