// SPDX-License-Identifier: MIT
#include "media/lzw.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>

#include "media/lzw_decoder.h"
#include "media/lzw_match.h"
#include "tests/media/gif_decoder.h"

namespace kfx {
namespace {

using Bytes = std::vector<uint8_t>;

LzwPixels PixelsOf(const Bytes& symbols, int symbolCount) {
    return {.symbols = symbols, .open = Bytes(symbols.size()), .symbolCount = symbolCount};
}

LzwCodes Compress(const LzwPixels& pixels, int largestCodeSize, Bytes* stored) {
    return CompressLzw(MakeLzwMemory().get(), pixels, largestCodeSize, stored);
}

// Writes the pixels with this code size and reads them back; what was stored must be what was said.
Bytes RoundTrip(const LzwPixels& pixels, int largestCodeSize, int codeSize) {
    uint8_t same[256];
    for (size_t i = 0; i < 256; ++i) same[i] = static_cast<uint8_t>(i);
    Bytes stored;
    const LzwCodes codes = Compress(pixels, largestCodeSize, &stored);
    Bytes file;
    WriteLzw(codes, codeSize, same, &file);
    EXPECT_EQ(file.size(), LzwSize(codes, codeSize));
    size_t end = 0;
    Bytes read = test::DecodeLzw(file, 0, &end);
    EXPECT_EQ(end, file.size());
    EXPECT_TRUE(read == stored);
    Bytes decoded(stored.size());
    EXPECT_EQ(DecodeLzw(file.data(), file.size(), decoded.data(), decoded.size()), decoded.size());
    EXPECT_TRUE(decoded == stored);
    EXPECT_GE(MostLzwPixels(file.size()), stored.size());
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
    const LzwCodes codes = Compress(PixelsOf({0, 1, 2, 0, 1, 2, 0, 1, 2}, 3), 8, nullptr);
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
    const size_t closed = LzwSize(Compress(PixelsOf(pixels.symbols, 21), 5, nullptr), 5);
    const Bytes read = RoundTrip(pixels, 5, 5);
    ASSERT_EQ(read.size(), pixels.symbols.size());
    bool differs = false;
    for (size_t i = 0; i < read.size(); ++i) {
        if (read[i] == pixels.symbols[i]) continue;
        differs = true;
        ASSERT_TRUE(pixels.open[i] && read[i] == 20) << i;
    }
    EXPECT_TRUE(differs);
    EXPECT_LT(LzwSize(Compress(pixels, 5, nullptr), 5), closed);
}

TEST(Lzw, Near_symbols_stand_for_each_other_where_that_is_allowed) {
    constexpr int kSymbols = 16;
    Bytes nears(kSymbols * kSymbols);
    for (int a = 0; a < kSymbols; ++a)
        for (int b = 0; b < kSymbols; ++b)
            nears[static_cast<size_t>(a) * kSymbols + static_cast<size_t>(b)] = a / 2 == b / 2;
    LzwPixels pixels = PixelsOf(RandomSymbols(12000, kSymbols, 2), kSymbols);
    const size_t exact = LzwSize(Compress(pixels, 4, nullptr), 4);
    pixels.nears = nears.data();
    const Bytes read = RoundTrip(pixels, 4, 4);
    ASSERT_EQ(read.size(), pixels.symbols.size());
    for (size_t i = 0; i < read.size(); ++i) ASSERT_EQ(read[i] / 2, pixels.symbols[i] / 2) << i;
    EXPECT_LT(LzwSize(Compress(pixels, 4, nullptr), 4), exact * 9 / 10);
}

TEST(Lzw, Memory_that_served_another_image_gives_the_same_codes) {
    const LzwMemoryOwner memory = MakeLzwMemory();
    for (const int symbolCount : {256, 3, 40, 1, 256, 2}) {
        const LzwPixels pixels = PixelsOf(RandomSymbols(20000, symbolCount, 4), symbolCount);
        EXPECT_TRUE(CompressLzw(memory.get(), pixels, 8, nullptr) == Compress(pixels, 8, nullptr))
            << symbolCount;
    }
}

// Puts strings of the pixels into the dictionary, each longer by one than the longest one that is there.
void FillDictionary(const LzwPixels& pixels, LzwDictionary* dictionary, LzwMatch* match) {
    dictionary->firstMade = static_cast<uint32_t>(pixels.symbolCount);
    dictionary->symbolBits = 5;
    ClearLzwDictionary(dictionary);
    for (size_t at = 0; at < pixels.symbols.size() && dictionary->next < kLzwCodeLimit;) {
        FindLzwMatch(pixels, *dictionary, at, 1, match);
        at += match->length;
        const uint32_t end = match->nodes[match->length - 1];
        if (at < pixels.symbols.size()) PutLzwString(dictionary, dictionary->next++, end, pixels.symbols[at]);
    }
}

TEST(Lzw, A_match_of_the_needed_length_is_found) {
    const auto dictionary = std::make_unique<LzwDictionary>();
    const auto longest = std::make_unique<LzwMatch>();
    const auto match = std::make_unique<LzwMatch>();
    size_t longestOfAll = 0;
    for (const int run : {3, 9000}) {
        LzwPixels pixels = PixelsOf(RandomSymbols(60000, 4, run), 21);
        pixels.transparentSymbol = 20;
        pixels.open = RandomSymbols(60000, 2, 90);
        FillDictionary(pixels, dictionary.get(), match.get());
        for (size_t at = 0; at < pixels.symbols.size(); at += 37) {
            FindLzwMatch(pixels, *dictionary, at, 1, longest.get());
            longestOfAll = std::max(longestOfAll, longest->length);
            for (const size_t needed : {longest->length - 1, longest->length, longest->length + 1}) {
                FindLzwMatch(pixels, *dictionary, at, needed, match.get());
                if (needed > longest->length) {
                    ASSERT_LE(match->length, longest->length);
                    continue;
                }
                ASSERT_EQ(match->length, longest->length) << at;
                ASSERT_TRUE(std::equal(match->nodes, match->nodes + match->length, longest->nodes)) << at;
            }
        }
    }
    EXPECT_GT(longestOfAll, 2 * LzwDictionary::kMostReach);
}

struct Code {
    unsigned value;
    unsigned bits;
};

// Image data of these codes, in blocks of `block` bytes, with or without the empty block that ends them.
Bytes DataOf(uint8_t codeSize, const std::vector<Code>& codes, size_t block, bool hasEnd = true) {
    Bytes packed;
    unsigned count = 0;
    for (const Code& code : codes) {
        for (unsigned bit = 0; bit < code.bits; ++bit, ++count) {
            if (count % 8 == 0) packed.push_back(0);
            packed.back() |= static_cast<uint8_t>((code.value >> bit & 1) << count % 8);
        }
    }
    Bytes data = {codeSize};
    for (size_t at = 0; at < packed.size(); at += block) {
        const size_t length = std::min(block, packed.size() - at);
        data.push_back(static_cast<uint8_t>(length));
        data.insert(data.end(), packed.begin() + static_cast<std::ptrdiff_t>(at),
                    packed.begin() + static_cast<std::ptrdiff_t>(at + length));
    }
    if (hasEnd) data.push_back(0);
    return data;
}

// As many as there are of ten.
Bytes Decoded(const Bytes& data) {
    Bytes pixels(10);
    pixels.resize(DecodeLzw(data.data(), data.size(), pixels.data(), pixels.size()));
    return pixels;
}

TEST(LzwDecoder, Codes_are_read_across_blocks_of_any_length) {
    const std::vector<Code> codes = {{4, 3}, {1, 3}, {6, 3}, {2, 3}, {6, 4}, {7, 4}, {5, 4}};
    for (const size_t block : {1u, 2u, 3u, 255u})
        EXPECT_EQ(Decoded(DataOf(2, codes, block)), (Bytes{1, 1, 1, 2, 1, 1, 1, 1, 2})) << block;
}

TEST(LzwDecoder, A_missing_clear_code_at_the_beginning_does_no_harm) {
    EXPECT_EQ(Decoded(DataOf(2, {{3, 3}, {6, 3}, {5, 3}}, 255)), (Bytes{3, 3, 3}));
    EXPECT_EQ(Decoded(DataOf(2, {{1, 3}, {2, 3}, {7, 3}, {5, 4}}, 255)), (Bytes{1, 2, 2, 2}));
}

// The first code takes a bit, or two, and others one more.
TEST(LzwDecoder, Pixels_of_one_value_or_two_have_the_shortest_codes) {
    EXPECT_EQ(Decoded(DataOf(0, {{1, 1}, {0, 1}, {3, 2}, {0, 3}, {2, 3}}, 255)), (Bytes{0, 0, 0, 0}));
    EXPECT_EQ(Decoded(DataOf(1, {{2, 2}, {1, 2}, {4, 3}, {0, 3}, {3, 3}}, 255)), (Bytes{1, 1, 1, 0}));
}

TEST(LzwDecoder, Pixels_end_before_a_code_that_cannot_be) {
    EXPECT_EQ(Decoded(DataOf(2, {{4, 3}, {1, 3}, {7, 3}, {1, 3}}, 255)), (Bytes{1}));
    EXPECT_EQ(Decoded(DataOf(2, {{4, 3}, {6, 3}, {1, 3}}, 255)), Bytes());
    EXPECT_EQ(Decoded(DataOf(9, {{1, 10}}, 255)), Bytes());
    EXPECT_EQ(Decoded({}), Bytes());
    EXPECT_EQ(Decoded({2}), Bytes());
}

TEST(LzwDecoder, Pixels_end_with_the_data_and_at_the_end_code) {
    const std::vector<Code> codes = {{4, 3}, {1, 3}, {2, 3}, {3, 3}, {0, 4}};
    EXPECT_EQ(Decoded(DataOf(2, {{4, 3}, {1, 3}, {5, 3}, {2, 3}}, 255)), (Bytes{1}));
    Bytes data = DataOf(2, codes, 255, false);
    EXPECT_EQ(Decoded(data), (Bytes{1, 2, 3, 0}));
    data.pop_back();  // inside the block
    EXPECT_EQ(Decoded(data), (Bytes{1}));
}

TEST(LzwDecoder, Pixels_beyond_the_asked_number_are_left_out) {
    const Bytes data = DataOf(2, {{4, 3}, {1, 3}, {6, 3}, {7, 3}}, 255);
    for (size_t count = 0; count <= 6; ++count) {
        const auto pixels = std::make_unique<uint8_t[]>(count);  // a byte beyond it would be noticed
        ASSERT_EQ(DecodeLzw(data.data(), data.size(), pixels.get(), count), count);
        EXPECT_TRUE(
            std::all_of(pixels.get(), pixels.get() + count, [](uint8_t pixel) { return pixel == 1; }));
    }
}

TEST(LzwDecoder, Random_data_stay_within_the_pixels) {
    std::mt19937 random(11);
    for (int round = 0; round < 3000; ++round) {
        Bytes data = {static_cast<uint8_t>(random() % 10)};
        while (data.size() < 300 && random() % 200 != 0) data.push_back(static_cast<uint8_t>(random()));
        const size_t count = random() % 5000;
        const auto pixels = std::make_unique<uint8_t[]>(count);
        const size_t decoded = DecodeLzw(data.data(), data.size(), pixels.get(), count);
        EXPECT_LE(decoded, count);
        EXPECT_LE(decoded, MostLzwPixels(data.size()));
    }
}

}  // namespace
}  // namespace kfx
