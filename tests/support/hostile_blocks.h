// SPDX-License-Identifier: MIT
// Animation blocks with one thing wrong or unusual: every field at the values that have broken readers.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kfx::test {

enum class Verdict {
    Refused,
    Accepted,
    Either,  // what the field says may be there or not; the block must do no harm
};

struct HostileBlock {
    std::string name;
    std::vector<uint8_t> bytes;
    Verdict verdict;
};

// All of them, of three frames of 8, 24 and 1 bits per pixel. Those that are cut stand one byte apart.
std::vector<HostileBlock> HostileBlocks();

// Among them, those that are not merely cut.
std::vector<HostileBlock> MutatedBlocks();

}  // namespace kfx::test
