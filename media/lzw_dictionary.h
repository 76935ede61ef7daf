// SPDX-License-Identifier: MIT
// The strings of pixels that codes stand for while an image of a GIF file is compressed.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kfx {

constexpr int kWidestLzwCode = 12;
constexpr uint32_t kLzwCodeLimit = 4095;  // codes have 12 bits; some readers do not know the last one

// Strings as nodes of a tree: a node stands for the string of its parent and one more symbol. The nodes below
// `firstMade` stand for single symbols. Only the rows of nodes that exist hold anything.
struct LzwDictionary {
    static constexpr size_t kNodes = kLzwCodeLimit + 1;
    static constexpr unsigned kMostSymbolBits = 8;
    static constexpr size_t kMostReach = 100;
    uint32_t firstMade;   // symbols
    uint32_t next;        // the node that is made next
    uint32_t limit;       // nodes end before this one
    unsigned symbolBits;  // a row of `children` has 1 << symbolBits entries
    uint16_t parents[kNodes];
    uint16_t lengths[kNodes];  // symbols of the string
    // The length of the longest string that begins with this one, if it is below kMostReach; after
    // ReplaceLastLzwString it can be less.
    uint8_t reaches[kNodes];
    uint8_t lastSymbols[kNodes];
    uint8_t firstSymbols[kNodes];
    // Lists of each node's children, for matching with near symbols.
    uint16_t firstChildren[kNodes];
    uint16_t nextSiblings[kNodes];
    // The child by each symbol, 0 where there is none: node 0 is nobody's child.
    uint16_t children[kNodes << kMostSymbolBits];
};

// Empties the dictionary but for the single symbols, of which there are `firstMade`.
void ClearLzwDictionary(LzwDictionary* dictionary);

// Makes `node` the child of `parent` by `symbol`, unless there is one: then `node` stays unused.
void PutLzwString(LzwDictionary* dictionary, uint32_t node, uint32_t parent, uint32_t symbol);

// Gives the string that was put last another symbol.
void ReplaceLastLzwString(LzwDictionary* dictionary, uint32_t node, uint32_t parent, uint32_t symbol,
                          uint32_t newSymbol);

inline uint32_t LzwChildOf(const LzwDictionary& dictionary, uint32_t parent, uint32_t symbol) {
    return dictionary.children[parent << dictionary.symbolBits | symbol];
}

}  // namespace kfx
