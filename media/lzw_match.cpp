// SPDX-License-Identifier: MIT
#include "media/lzw_match.h"

#include <algorithm>

namespace kfx {
namespace {

// Several strings of the dictionary can match open pixels; so many are followed at a time.
constexpr size_t kMostPaths = 8;

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

// The single symbols that the pixel may be stored as. Of several strings the first one is taken, and the more
// often that is the transparent one, the longer transparent strings become.
Paths FirstPaths(const LzwPixels& pixels, size_t at) {
    Paths paths;
    const uint32_t own = pixels.symbols[at];
    if (pixels.open[at]) AddPath(&paths, static_cast<uint32_t>(pixels.transparentSymbol));
    AddPath(&paths, own);
    if (!pixels.nears) return paths;
    for (uint32_t other = 0; other < static_cast<uint32_t>(pixels.symbolCount); ++other)
        if (other != own && IsNear(pixels, own, other)) AddPath(&paths, other);
    return paths;
}

// The strings that are longer by the pixel at `at`.
Paths LongerPaths(const LzwPixels& pixels, const LzwDictionary& dictionary, const Paths& paths, size_t at) {
    const uint32_t own = pixels.symbols[at];
    const auto transparent = static_cast<uint32_t>(pixels.transparentSymbol);
    const bool open = pixels.open[at] != 0;
    Paths longer;
    for (size_t i = 0; i < paths.count; ++i) {
        const uint32_t node = paths.nodes[i];
        if (open)
            if (const uint32_t child = LzwChildOf(dictionary, node, transparent)) AddPath(&longer, child);
        if (const uint32_t child = LzwChildOf(dictionary, node, own)) AddPath(&longer, child);
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

bool CanReach(const LzwDictionary& dictionary, const Paths& paths, size_t needed) {
    return std::any_of(paths.nodes, paths.nodes + paths.count,
                       [&](uint16_t node) { return dictionary.reaches[node] >= needed; });
}

// Goes on from a string that matches `length` pixels from `at` on, as long as there is only one way to do so.
// Returns the strings, no or several ones, of the length where that ends.
Paths FollowOne(const LzwPixels& pixels, const LzwDictionary& dictionary, size_t at, uint32_t node,
                size_t needed, LzwMatch* match) {
    const size_t available = pixels.symbols.size() - at;
    const uint8_t* const symbols = pixels.symbols.data() + at;
    const uint8_t* const open = pixels.open.data() + at;
    const auto transparent = static_cast<uint32_t>(pixels.transparentSymbol);
    size_t length = match->length;
    Paths paths;
    for (; length < available; ++length) {
        uint32_t child = LzwChildOf(dictionary, node, symbols[length]);
        if (open[length]) {
            const uint32_t other = LzwChildOf(dictionary, node, transparent);
            if (other != 0 && child != 0) {
                AddPath(&paths, other);
                AddPath(&paths, child);
                match->nodes[length++] = static_cast<uint16_t>(other);
                break;
            }
            child |= other;
        }
        if (child == 0) break;
        node = child;
        match->nodes[length] = static_cast<uint16_t>(node);
        if (dictionary.reaches[node] >= needed) continue;
        length = 0;
        break;
    }
    match->length = length;
    return paths;
}

}  // namespace

void FindLzwMatch(const LzwPixels& pixels, const LzwDictionary& dictionary, size_t at, size_t needed,
                  LzwMatch* match) {
    const size_t available = pixels.symbols.size() - at;
    match->length = 0;
    if (available < needed) return;
    needed = std::min(needed, LzwDictionary::kMostReach);
    Paths paths = FirstPaths(pixels, at);
    match->nodes[0] = paths.nodes[0];
    match->length = 1;
    while (true) {
        if (!CanReach(dictionary, paths, needed)) {
            match->length = 0;
            return;
        }
        if (paths.count == 1 && !pixels.nears) {
            paths = FollowOne(pixels, dictionary, at, paths.nodes[0], needed, match);
            if (paths.count == 0) return;
        }
        if (match->length == available) return;
        paths = LongerPaths(pixels, dictionary, paths, at + match->length);
        if (paths.count == 0) return;
        match->nodes[match->length++] = paths.nodes[0];
    }
}

bool MayBeStoredAs(const LzwPixels& pixels, size_t at, uint32_t symbol) {
    const uint32_t own = pixels.symbols[at];
    if (symbol == own) return true;
    if (static_cast<int>(symbol) == pixels.transparentSymbol) return pixels.open[at] != 0;
    return pixels.nears && IsNear(pixels, own, symbol);
}

}  // namespace kfx
