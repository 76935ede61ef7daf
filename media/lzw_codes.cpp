// SPDX-License-Identifier: MIT
#include "media/lzw_codes.h"

#include <algorithm>
#include <bit>

#include "media/lzw.h"
#include "media/lzw_dictionary.h"

namespace kfx {
namespace {

constexpr size_t kMaxBlockSize = 255;

}  // namespace

int LzwCodeWidth(size_t n, int minimumCodeSize) {
    if (n < 2) return minimumCodeSize + 1;
    const size_t nextEntry = (size_t{1} << minimumCodeSize) + n;
    return std::min(std::max(minimumCodeSize + 1, static_cast<int>(std::bit_width(nextEntry))),
                    kWidestLzwCode);
}

int LzwCodeSize(int symbolCount) {
    return std::max(2, static_cast<int>(std::bit_width(static_cast<unsigned>(symbolCount - 1))));
}

size_t LzwSize(const LzwCodes& codes, int minimumCodeSize) {
    size_t bits = 0;
    size_t sinceClear = 0;
    for (const uint16_t code : codes) {
        bits += static_cast<size_t>(LzwCodeWidth(++sinceClear, minimumCodeSize));
        if (code == kLzwClear) sinceClear = 0;
    }
    bits += static_cast<size_t>(LzwCodeWidth(++sinceClear, minimumCodeSize));  // the end
    const size_t bytes = (bits + 7) / 8;
    return 1 + bytes + (bytes + kMaxBlockSize - 1) / kMaxBlockSize + 1;
}

void WriteLzw(const LzwCodes& codes, int minimumCodeSize, const uint8_t* indexOfSymbol,
              std::vector<uint8_t>* file) {
    const uint32_t clear = 1u << minimumCodeSize;
    file->push_back(static_cast<uint8_t>(minimumCodeSize));
    size_t block = file->size();
    file->push_back(0);
    uint32_t bits = 0;
    int bitCount = 0;
    const auto putByte = [&](uint32_t byte) {
        if ((*file)[block] == kMaxBlockSize) {
            block = file->size();
            file->push_back(0);
        }
        file->push_back(static_cast<uint8_t>(byte));
        ++(*file)[block];
    };
    size_t sinceClear = 0;
    const auto putCode = [&](uint32_t code) {
        bits |= code << bitCount;
        bitCount += LzwCodeWidth(++sinceClear, minimumCodeSize);
        for (; bitCount >= 8; bitCount -= 8, bits >>= 8) putByte(bits & 255);
    };
    for (const uint16_t code : codes) {
        putCode(code == kLzwClear       ? clear
                : code < kLzwFirstEntry ? indexOfSymbol[code]
                                        : clear + 2 + (code - kLzwFirstEntry));
        if (code == kLzwClear) sinceClear = 0;
    }
    putCode(clear + 1);
    if (bitCount > 0) putByte(bits & 255);
    file->push_back(0);
}

}  // namespace kfx
