// SPDX-License-Identifier: MIT
#include "media/lzw.h"

#include <gtest/gtest.h>

#include <random>

#include "tests/media/gif_decoder.h"

namespace kfx {
namespace {

using Bytes = std::vector<uint8_t>;

LzwPixels PixelsOf(const Bytes& symbols, int symbolCount) {
    return {.symbols = symbols, .open = Bytes(symbols.size()), .symbolCount = symbolCount};
}

// Writes the pixels with this code size and reads them back; what was stored must be what was said.
Bytes RoundTrip(const LzwPixels& pixels, int largestCodeSize, int codeSize) {
    uint8_t same[256];
    for (size_t i = 0; i < 256; ++i) same[i] = static_cast<uint8_t>(i);
    Bytes stored;
    const LzwCodes codes = CompressLzw(pixels, largestCodeSize, &stored);
    Bytes file;
    WriteLzw(codes, codeSize, same, &file);
    EXPECT_EQ(file.size(), LzwSize(codes, codeSize));
    size_t end = 0;
    Bytes read = test::DecodeLzw(file, 0, &end);
    EXPECT_EQ(end, file.size());
    EXPECT_TRUE(read == stored);
    return read;
}

Bytes RandomSymbols(size_t count, int symbolCount, int run) {
    std::mt19937 random(5);
    Bytes symbols;
    while (symbols.size() < count)
        symbols.insert(symbols.end(), 1 + random() % static_cast<unsigned>(run),
                       static_cast<uint8_t>(random() % static_cast<unsigned>(symbolCount)));
    symbols.resize(count);
    return symbols;
}

TEST(Lzw, Pixels_come_back_with_every_code_size_and_length) {
    for (const int symbolCount : {1, 2, 3, 5, 16, 17, 128, 256}) {
        for (const size_t count : {1u, 2u, 3u, 100u, 5000u, 20000u}) {
            for (const int run : {1, 300}) {
                const Bytes symbols = RandomSymbols(count, symbolCount, run);
                const int least = LzwCodeSize(symbolCount);
                for (const int codeSize : {least, 8}) {
                    EXPECT_TRUE(RoundTrip(PixelsOf(symbols, symbolCount), 8, codeSize) == symbols)
                        << symbolCount << ", " << count << ", " << codeSize;
                    EXPECT_TRUE(RoundTrip(PixelsOf(symbols, symbolCount), least, least) == symbols);
                }
            }
        }
    }
}

TEST(Lzw, Symbols_can_get_other_numbers_afterwards) {
    const LzwCodes codes = CompressLzw(PixelsOf({0, 1, 2, 0, 1, 2, 0, 1, 2}, 3), 8, nullptr);
    const uint8_t others[] = {31, 7, 0};
    Bytes file;
    WriteLzw(codes, 5, others, &file);
    size_t end = 0;
    EXPECT_EQ(test::DecodeLzw(file, 0, &end), (Bytes{31, 7, 0, 31, 7, 0, 31, 7, 0}));
}

TEST(Lzw, Open_pixels_are_stored_as_their_own_symbol_or_the_transparent_one) {
    LzwPixels pixels = PixelsOf(RandomSymbols(40000, 20, 3), 21);
    pixels.transparentSymbol = 20;
    pixels.open = RandomSymbols(40000, 2, 60);
    const size_t closed = LzwSize(CompressLzw(PixelsOf(pixels.symbols, 21), 5, nullptr), 5);
    const Bytes read = RoundTrip(pixels, 5, 5);
    ASSERT_EQ(read.size(), pixels.symbols.size());
    bool differs = false;
    for (size_t i = 0; i < read.size(); ++i) {
        if (read[i] == pixels.symbols[i]) continue;
        differs = true;
        ASSERT_TRUE(pixels.open[i] && read[i] == 20) << i;
    }
    EXPECT_TRUE(differs);
    EXPECT_LT(LzwSize(CompressLzw(pixels, 5, nullptr), 5), closed);
}

TEST(Lzw, Near_symbols_stand_for_each_other_where_that_is_allowed) {
    constexpr int kSymbols = 16;
    Bytes nears(kSymbols * kSymbols);
    for (int a = 0; a < kSymbols; ++a)
        for (int b = 0; b < kSymbols; ++b)
            nears[static_cast<size_t>(a) * kSymbols + static_cast<size_t>(b)] = a / 2 == b / 2;
    LzwPixels pixels = PixelsOf(RandomSymbols(12000, kSymbols, 2), kSymbols);
    const size_t exact = LzwSize(CompressLzw(pixels, 4, nullptr), 4);
    pixels.nears = nears.data();
    const Bytes read = RoundTrip(pixels, 4, 4);
    ASSERT_EQ(read.size(), pixels.symbols.size());
    for (size_t i = 0; i < read.size(); ++i) ASSERT_EQ(read[i] / 2, pixels.symbols[i] / 2) << i;
    EXPECT_LT(LzwSize(CompressLzw(pixels, 4, nullptr), 4), exact * 9 / 10);
}

}  // namespace
}  // namespace kfx
