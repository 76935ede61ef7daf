// SPDX-License-Identifier: MIT
// A decoder of GIF files that shares nothing with the product: written from the format's description, plain
// and slow, for files without interlacing.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kfx::test {

struct DecodedFrame {
    std::vector<uint8_t> pixels;  // RGBA of the whole canvas
    int delay = 0;
};

struct DecodedGif {
    std::string fault;  // empty: none
    int loopCount = -1;
    std::vector<DecodedFrame> frames;
};

DecodedGif DecodeGif(const std::vector<uint8_t>& file);

// The indices of an image's data, which begin with the minimum code size; empty when they are damaged. `end`
// gets the place behind them.
std::vector<uint8_t> DecodeLzw(const std::vector<uint8_t>& file, size_t at, size_t* end);

}  // namespace kfx::test
