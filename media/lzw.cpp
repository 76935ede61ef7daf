// SPDX-License-Identifier: MIT
#include "media/lzw.h"

#include <bit>
#include <utility>

#include "media/lzw_codes.h"
#include "media/lzw_match.h"

namespace kfx {

// Without initial values: parts of it are filled when they are needed.
struct LzwMemory {
    LzwDictionary dictionary;
    LzwMatch matches[3];
};

namespace {

// Strings that are shorter than the longest one by up to this many pixels are tried, too.
constexpr size_t kShorterStrings = 4;
// Strings beyond this length are taken whole: trying shorter ones would cost more time than it saves bytes.
constexpr size_t kLongString = 60;
constexpr size_t kJudgedCodes = 128;  // after so many the use of a full dictionary is judged again

// Judges by bits a pixel whether a full dictionary is still as good as it was while it was filled.
struct FillJudge {
    size_t filledPixels = 0;  // from the last clear code until the dictionary was full
    size_t filledBits = 0;
    size_t windowPixels = 0;  // since it was judged
    size_t windowCodes = 0;
};

struct Compressor {
    const LzwPixels* pixels;
    LzwDictionary* dictionary;
    LzwMatch* current;    // from the next pixel on
    LzwMatch* following;  // from behind the chosen part of it on
    LzwMatch* tried;
    LzwCodes codes = {};
    bool hasLast = false;  // since the last clear code
    uint32_t last = 0;     // the node of the last code
    size_t codesSinceClear = 0;
    FillJudge judge = {};
};

// Chooses how many pixels of the current match the next code takes, and finds the match behind them, which
// has no length at the end. A shorter string than the longest one leads to a dictionary entry that was there
// before, so that it has to gain more than the entry is worth; a full dictionary gets none.
size_t ChooseLength(Compressor* compressor, size_t at, bool full) {
    const LzwPixels& pixels = *compressor->pixels;
    const size_t longest = compressor->current->length;
    compressor->following->length = 0;
    if (at + longest >= pixels.symbols.size()) return longest;
    FindLzwMatch(pixels, *compressor->dictionary, at + longest, 1, compressor->following);
    if (!pixels.looksAhead || longest > kLongString) return longest;
    size_t best = longest;
    size_t covered = longest + compressor->following->length + (full ? 0 : 1 + longest / 5);
    const size_t shortest = longest > kShorterStrings ? longest - kShorterStrings : 1;
    for (size_t length = longest - 1; length >= shortest; --length) {
        FindLzwMatch(pixels, *compressor->dictionary, at + length, covered - length + 1, compressor->tried);
        const size_t both = length + compressor->tried->length;
        if (both <= covered) continue;
        covered = both;
        best = length;
        std::swap(compressor->tried, compressor->following);
    }
    return best;
}

// True: begin a new dictionary.
bool IsWornOut(FillJudge* judge) {
    if (judge->windowCodes < kJudgedCodes) return false;
    const bool worse =
        judge->windowCodes * kWidestLzwCode * judge->filledPixels > judge->filledBits * judge->windowPixels;
    judge->windowCodes = 0;
    judge->windowPixels = 0;
    return worse;
}

// Makes the entry that a reader makes of the last string and the first symbol of the current one, which can
// be the current code itself when the current match begins with the last string. Returns that symbol; the
// string that is chosen at last may begin with another one.
uint32_t ExpectEntry(Compressor* compressor, size_t at) {
    const uint32_t last = compressor->last;
    LzwDictionary& dictionary = *compressor->dictionary;
    LzwMatch& match = *compressor->current;
    const LzwPixels& pixels = *compressor->pixels;
    const uint32_t end = match.nodes[match.length - 1];
    const uint32_t made = dictionary.next++;
    const uint32_t first = dictionary.firstSymbols[end];
    PutLzwString(&dictionary, made, last, first);
    const size_t next = at + match.length;
    if (end == last && next < pixels.symbols.size() && MayBeStoredAs(pixels, next, first) &&
        LzwChildOf(dictionary, last, first) == made)
        match.nodes[match.length++] = static_cast<uint16_t>(made);
    return first;
}

void BeginDictionary(Compressor* compressor, size_t at) {
    ClearLzwDictionary(compressor->dictionary);
    compressor->codes.push_back(kLzwClear);
    compressor->hasLast = false;
    compressor->codesSinceClear = 0;
    compressor->judge = {};
    FindLzwMatch(*compressor->pixels, *compressor->dictionary, at, 1, compressor->current);
}

void PutCode(Compressor* compressor, uint32_t node, size_t length, bool full, int codeSize) {
    const uint32_t firstMade = compressor->dictionary->firstMade;
    const uint32_t code = node < firstMade ? node : node - firstMade + kLzwFirstEntry;
    compressor->codes.push_back(static_cast<uint16_t>(code));
    compressor->hasLast = true;
    compressor->last = node;
    ++compressor->codesSinceClear;
    FillJudge& judge = compressor->judge;
    if (full) {
        ++judge.windowCodes;
        judge.windowPixels += length;
    } else {
        judge.filledPixels += length;
        judge.filledBits += static_cast<size_t>(LzwCodeWidth(compressor->codesSinceClear, codeSize));
    }
}

void CopyString(const LzwDictionary& dictionary, uint32_t node, size_t length, uint8_t* end) {
    for (; length > 1; --length) {
        *--end = dictionary.lastSymbols[node];
        node = dictionary.parents[node];
    }
    *--end = static_cast<uint8_t>(node);
}

}  // namespace

void LzwMemoryDeleter::operator()(LzwMemory* memory) const { delete memory; }

LzwMemoryOwner MakeLzwMemory() { return LzwMemoryOwner(new LzwMemory); }

LzwCodes CompressLzw(LzwMemory* memory, const LzwPixels& pixels, int largestCodeSize,
                     std::vector<uint8_t>* stored) {
    Compressor compressor = {.pixels = &pixels,
                             .dictionary = &memory->dictionary,
                             .current = &memory->matches[0],
                             .following = &memory->matches[1],
                             .tried = &memory->matches[2]};
    LzwDictionary& dictionary = memory->dictionary;
    dictionary.firstMade = static_cast<uint32_t>(pixels.symbolCount);
    dictionary.limit = dictionary.firstMade + kLzwCodeLimit - (1u << largestCodeSize) - 2;
    dictionary.symbolBits = static_cast<unsigned>(std::bit_width(dictionary.firstMade - 1));
    if (stored) stored->resize(pixels.symbols.size());

    BeginDictionary(&compressor, 0);
    for (size_t at = 0; at < pixels.symbols.size();) {
        const bool full = dictionary.next >= dictionary.limit;
        if (full && IsWornOut(&compressor.judge)) {
            BeginDictionary(&compressor, at);
            continue;
        }
        const bool makes = compressor.hasLast && !full;
        const uint32_t made = dictionary.next;
        const uint32_t last = compressor.last;
        const uint32_t expected = makes ? ExpectEntry(&compressor, at) : 0;
        const size_t length = ChooseLength(&compressor, at, full);
        const uint32_t node = compressor.current->nodes[length - 1];
        if (makes && dictionary.firstSymbols[node] != expected) {
            ReplaceLastLzwString(&dictionary, made, last, expected, dictionary.firstSymbols[node]);
            if (at + length < pixels.symbols.size())
                FindLzwMatch(pixels, dictionary, at + length, 1, compressor.following);
        }
        PutCode(&compressor, node, length, full, largestCodeSize);
        if (stored) CopyString(dictionary, node, length, stored->data() + at + length);
        at += length;
        std::swap(compressor.current, compressor.following);
    }
    return std::move(compressor.codes);
}

}  // namespace kfx
