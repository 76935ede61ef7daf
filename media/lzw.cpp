// SPDX-License-Identifier: MIT
#include "media/lzw.h"

#include <algorithm>
#include <bit>
#include <iterator>
#include <memory>

namespace kfx {
namespace {

constexpr uint32_t kCodeLimit = 4095;  // codes have 12 bits; some readers do not know the last one
constexpr int kWidestCode = 12;
// Strings that are shorter than the longest one by up to this many pixels are tried, too.
constexpr size_t kShorterStrings = 4;
// Strings beyond this length are taken whole: trying shorter ones would cost more time than it saves bytes.
constexpr size_t kLongString = 60;
// Several strings of the dictionary can match open pixels; so many are followed at a time.
constexpr size_t kMostPaths = 8;
constexpr size_t kJudgedCodes = 128;  // after so many the use of a full dictionary is judged again
constexpr size_t kMaxBlockSize = 255;

// Strings as nodes of a tree: a node stands for the string of its parent and one more symbol. Children are
// found by hashing; a slot holds the parent, the symbol and the child, and 0 when it is free.
struct Dictionary {
    static constexpr unsigned kSlotBits = 14;
    uint32_t slots[size_t{1} << kSlotBits];
    uint16_t parents[kCodeLimit + 1];
    uint8_t lastSymbols[kCodeLimit + 1];
    uint8_t firstSymbols[kCodeLimit + 1];
    // Lists of each node's children, for matching with near symbols.
    uint16_t firstChildren[kCodeLimit + 1];
    uint16_t nextSiblings[kCodeLimit + 1];
    uint32_t next = 0;       // the node that is made next
    uint32_t firstMade = 0;  // nodes below stand for single symbols
    uint32_t limit = 0;      // nodes end before this one
};

uint32_t SlotOf(uint32_t key) { return key * 0x9E3779B1u >> (32 - Dictionary::kSlotBits); }

uint32_t SlotAfter(uint32_t slot) { return (slot + 1) & ((1u << Dictionary::kSlotBits) - 1); }

uint32_t KeyOf(uint32_t parent, uint32_t symbol) { return parent << 8 | symbol; }

// 0: there is none. Node 0 stands for a single symbol and is nobody's child.
uint32_t ChildOf(const Dictionary& dictionary, uint32_t parent, uint32_t symbol) {
    const uint32_t key = KeyOf(parent, symbol);
    for (uint32_t slot = SlotOf(key);; slot = SlotAfter(slot)) {
        const uint32_t held = dictionary.slots[slot];
        if (held == 0) return 0;
        if (held >> kWidestCode == key) return held & kCodeLimit;
    }
}

void ClearDictionary(Dictionary* dictionary) {
    std::fill(std::begin(dictionary->slots), std::end(dictionary->slots), 0);
    std::fill(std::begin(dictionary->firstChildren), std::end(dictionary->firstChildren), uint16_t{0});
    dictionary->next = dictionary->firstMade;
}

// Makes `node` the child of `parent` by `symbol`, unless there is one: then `node` stays unused.
void PutString(Dictionary* dictionary, uint32_t node, uint32_t parent, uint32_t symbol) {
    const uint32_t key = KeyOf(parent, symbol);
    uint32_t slot = SlotOf(key);
    for (; dictionary->slots[slot] != 0; slot = SlotAfter(slot))
        if (dictionary->slots[slot] >> kWidestCode == key) return;
    dictionary->slots[slot] = key << kWidestCode | node;
    dictionary->parents[node] = static_cast<uint16_t>(parent);
    dictionary->lastSymbols[node] = static_cast<uint8_t>(symbol);
    dictionary->firstSymbols[node] = dictionary->firstSymbols[parent];
    dictionary->nextSiblings[node] = dictionary->firstChildren[parent];
    dictionary->firstChildren[parent] = static_cast<uint16_t>(node);
}

// Gives the string that was put last another symbol.
void ReplaceLastString(Dictionary* dictionary, uint32_t node, uint32_t parent, uint32_t symbol,
                       uint32_t newSymbol) {
    const uint32_t held = KeyOf(parent, symbol) << kWidestCode | node;
    uint32_t slot = SlotOf(KeyOf(parent, symbol));
    while (dictionary->slots[slot] != held && dictionary->slots[slot] != 0) slot = SlotAfter(slot);
    if (dictionary->slots[slot] == held) {
        dictionary->slots[slot] = 0;  // nothing was put behind it since
        dictionary->firstChildren[parent] = dictionary->nextSiblings[node];
    }
    PutString(dictionary, node, parent, newSymbol);
}

// Strings that match the pixels from some place on, all of one length.
struct Paths {
    uint16_t nodes[kMostPaths];
    size_t count = 0;
};

void AddPath(Paths* paths, uint32_t node) {
    if (paths->count < kMostPaths) paths->nodes[paths->count++] = static_cast<uint16_t>(node);
}

bool IsNear(const LzwPixels& pixels, uint32_t symbol, uint32_t other) {
    return pixels.nears[symbol * static_cast<uint32_t>(pixels.symbolCount) + other] != 0;
}

bool IsOpen(const LzwPixels& pixels, size_t at) {
    return pixels.open[at] && pixels.symbols[at] != pixels.transparentSymbol;
}

// The single symbols that the pixel may be stored as. Of several strings the first one is taken, and the more
// often that is the transparent one, the longer transparent strings become.
Paths FirstPaths(const LzwPixels& pixels, size_t at) {
    Paths paths;
    const uint32_t own = pixels.symbols[at];
    if (IsOpen(pixels, at)) AddPath(&paths, static_cast<uint32_t>(pixels.transparentSymbol));
    AddPath(&paths, own);
    if (!pixels.nears) return paths;
    for (uint32_t other = 0; other < static_cast<uint32_t>(pixels.symbolCount); ++other)
        if (other != own && IsNear(pixels, own, other)) AddPath(&paths, other);
    return paths;
}

// The strings that are longer by the pixel at `at`.
Paths LongerPaths(const LzwPixels& pixels, const Dictionary& dictionary, const Paths& paths, size_t at) {
    const uint32_t own = pixels.symbols[at];
    const auto transparent = static_cast<uint32_t>(pixels.transparentSymbol);
    const bool open = IsOpen(pixels, at);
    Paths longer;
    for (size_t i = 0; i < paths.count; ++i) {
        const uint32_t node = paths.nodes[i];
        if (open)
            if (const uint32_t child = ChildOf(dictionary, node, transparent)) AddPath(&longer, child);
        if (const uint32_t child = ChildOf(dictionary, node, own)) AddPath(&longer, child);
        if (!pixels.nears) continue;
        for (uint32_t child = dictionary.firstChildren[node]; child != 0;
             child = dictionary.nextSiblings[child]) {
            const uint32_t symbol = dictionary.lastSymbols[child];
            if (symbol != own && symbol != transparent && IsNear(pixels, own, symbol))
                AddPath(&longer, child);
        }
    }
    return longer;
}

// A string that matches the pixels from some place on: nodes[n] matches n + 1 of them.
struct Match {
    size_t length = 0;
    uint16_t nodes[kCodeLimit + 1];
};

// Goes on from `paths`, which match `length` pixels from `at` on, as far as the dictionary has strings.
void FollowPaths(const LzwPixels& pixels, const Dictionary& dictionary, size_t at, Paths paths, size_t length,
                 Match* match) {
    const size_t available = pixels.symbols.size() - at;
    for (; length < available; ++length) {
        paths = LongerPaths(pixels, dictionary, paths, at + length);
        if (paths.count == 0) break;
        match->nodes[length] = paths.nodes[0];
    }
    match->length = length;
}

// Finds the longest string of the dictionary that matches the pixels from `at` on.
void FindMatch(const LzwPixels& pixels, const Dictionary& dictionary, size_t at, Match* match) {
    const size_t available = pixels.symbols.size() - at;
    const uint8_t* symbols = pixels.symbols.data() + at;
    const uint8_t* open = pixels.open.data() + at;
    if (open[0] || pixels.nears) {
        const Paths paths = FirstPaths(pixels, at);
        match->nodes[0] = paths.nodes[0];
        FollowPaths(pixels, dictionary, at, paths, 1, match);
        return;
    }
    // As long as no pixel is open, there is one way to go on.
    uint32_t node = symbols[0];
    match->nodes[0] = static_cast<uint16_t>(node);
    size_t length = 1;
    for (; length < available && !open[length]; ++length) {
        const uint32_t child = ChildOf(dictionary, node, symbols[length]);
        if (child == 0) {
            match->length = length;
            return;
        }
        node = child;
        match->nodes[length] = static_cast<uint16_t>(node);
    }
    Paths paths;
    AddPath(&paths, node);
    FollowPaths(pixels, dictionary, at, paths, length, match);
}

// Judges by bits a pixel whether a full dictionary is still as good as it was while it was filled.
struct FillJudge {
    size_t filledPixels = 0;  // from the last clear code until the dictionary was full
    size_t filledBits = 0;
    size_t windowPixels = 0;  // since it was judged
    size_t windowCodes = 0;
};

struct Compressor {
    const LzwPixels* pixels = nullptr;
    Dictionary dictionary;
    Match matches[3];
    Match* current = &matches[0];    // from the next pixel on
    Match* following = &matches[1];  // from behind the chosen part of it on
    Match* tried = &matches[2];
    LzwCodes codes;
    bool hasLast = false;  // since the last clear code
    uint32_t last = 0;     // the node of the last code
    size_t codesSinceClear = 0;
    FillJudge judge;
};

// Chooses how many pixels of the current match the next code takes, and finds the match behind them, which
// has no length at the end. A shorter string than the longest one leads to a dictionary entry that was there
// before, so that it has to gain more than the entry is worth; a full dictionary gets none.
size_t ChooseLength(Compressor* compressor, size_t at, bool full) {
    const LzwPixels& pixels = *compressor->pixels;
    const size_t longest = compressor->current->length;
    compressor->following->length = 0;
    if (at + longest >= pixels.symbols.size()) return longest;
    FindMatch(pixels, compressor->dictionary, at + longest, compressor->following);
    if (!pixels.looksAhead || longest > kLongString) return longest;
    size_t best = longest;
    size_t covered = longest + compressor->following->length + (full ? 0 : 1 + longest / 5);
    const size_t shortest = longest > kShorterStrings ? longest - kShorterStrings : 1;
    for (size_t length = longest - 1; length >= shortest; --length) {
        FindMatch(pixels, compressor->dictionary, at + length, compressor->tried);
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
        judge->windowCodes * kWidestCode * judge->filledPixels > judge->filledBits * judge->windowPixels;
    judge->windowCodes = 0;
    judge->windowPixels = 0;
    return worse;
}

// The bits of the n-th code (from 1) after a clear code: a reader makes a dictionary entry with each code but
// the first, and takes one more bit as soon as the next entry would not fit.
int CodeWidth(size_t n, int minimumCodeSize) {
    if (n < 2) return minimumCodeSize + 1;
    const size_t nextEntry = (size_t{1} << minimumCodeSize) + n;
    return std::min(std::max(minimumCodeSize + 1, static_cast<int>(std::bit_width(nextEntry))), kWidestCode);
}

bool MayBeStoredAs(const LzwPixels& pixels, size_t at, uint32_t symbol) {
    const uint32_t own = pixels.symbols[at];
    if (symbol == own) return true;
    if (static_cast<int>(symbol) == pixels.transparentSymbol) return pixels.open[at] != 0;
    return pixels.nears && IsNear(pixels, own, symbol);
}

// Makes the entry that a reader makes of the last string and the first symbol of the current one, which can
// be the current code itself when the current match begins with the last string. Returns that symbol; the
// string that is chosen at last may begin with another one.
uint32_t ExpectEntry(Compressor* compressor, size_t at) {
    const uint32_t last = compressor->last;
    Dictionary& dictionary = compressor->dictionary;
    Match& match = *compressor->current;
    const LzwPixels& pixels = *compressor->pixels;
    const uint32_t end = match.nodes[match.length - 1];
    const uint32_t made = dictionary.next++;
    const uint32_t first = dictionary.firstSymbols[end];
    PutString(&dictionary, made, last, first);
    const size_t next = at + match.length;
    if (end == last && next < pixels.symbols.size() && MayBeStoredAs(pixels, next, first) &&
        ChildOf(dictionary, last, first) == made)
        match.nodes[match.length++] = static_cast<uint16_t>(made);
    return first;
}

void BeginDictionary(Compressor* compressor, size_t at) {
    ClearDictionary(&compressor->dictionary);
    compressor->codes.push_back(kLzwClear);
    compressor->hasLast = false;
    compressor->codesSinceClear = 0;
    compressor->judge = {};
    FindMatch(*compressor->pixels, compressor->dictionary, at, compressor->current);
}

void PutCode(Compressor* compressor, uint32_t node, size_t length, bool full, int codeSize) {
    const uint32_t firstMade = compressor->dictionary.firstMade;
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
        judge.filledBits += static_cast<size_t>(CodeWidth(compressor->codesSinceClear, codeSize));
    }
}

void CopyString(const Dictionary& dictionary, uint32_t node, size_t length, uint8_t* end) {
    for (; length > 1; --length) {
        *--end = dictionary.lastSymbols[node];
        node = dictionary.parents[node];
    }
    *--end = static_cast<uint8_t>(node);
}

}  // namespace

int LzwCodeSize(int symbolCount) {
    return std::max(2, static_cast<int>(std::bit_width(static_cast<unsigned>(symbolCount - 1))));
}

LzwCodes CompressLzw(const LzwPixels& pixels, int largestCodeSize, std::vector<uint8_t>* stored) {
    const auto holder = std::make_unique<Compressor>();
    Compressor& compressor = *holder;
    compressor.pixels = &pixels;
    Dictionary& dictionary = compressor.dictionary;
    dictionary.firstMade = static_cast<uint32_t>(pixels.symbolCount);
    dictionary.limit = dictionary.firstMade + kCodeLimit - (1u << largestCodeSize) - 2;
    for (uint32_t symbol = 0; symbol < dictionary.firstMade; ++symbol)
        dictionary.firstSymbols[symbol] = static_cast<uint8_t>(symbol);
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
            ReplaceLastString(&dictionary, made, last, expected, dictionary.firstSymbols[node]);
            if (at + length < pixels.symbols.size())
                FindMatch(pixels, dictionary, at + length, compressor.following);
        }
        PutCode(&compressor, node, length, full, largestCodeSize);
        if (stored) CopyString(dictionary, node, length, stored->data() + at + length);
        at += length;
        std::swap(compressor.current, compressor.following);
    }
    return std::move(compressor.codes);
}

size_t LzwSize(const LzwCodes& codes, int minimumCodeSize) {
    size_t bits = 0;
    size_t sinceClear = 0;
    for (const uint16_t code : codes) {
        bits += static_cast<size_t>(CodeWidth(++sinceClear, minimumCodeSize));
        if (code == kLzwClear) sinceClear = 0;
    }
    bits += static_cast<size_t>(CodeWidth(++sinceClear, minimumCodeSize));  // the end
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
        bitCount += CodeWidth(++sinceClear, minimumCodeSize);
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
