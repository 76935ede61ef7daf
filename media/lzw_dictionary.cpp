// SPDX-License-Identifier: MIT
#include "media/lzw_dictionary.h"

#include <algorithm>

namespace kfx {
namespace {

uint8_t ReachOf(uint32_t length) {
    return static_cast<uint8_t>(std::min<size_t>(length, LzwDictionary::kMostReach));
}

void MakeNode(LzwDictionary* dictionary, uint32_t node, uint32_t length) {
    const size_t row = size_t{1} << dictionary->symbolBits;
    std::fill_n(dictionary->children + node * row, row, uint16_t{0});
    dictionary->firstChildren[node] = 0;
    dictionary->lengths[node] = static_cast<uint16_t>(length);
    dictionary->reaches[node] = ReachOf(length);
}

}  // namespace

void ClearLzwDictionary(LzwDictionary* dictionary) {
    for (uint32_t symbol = 0; symbol < dictionary->firstMade; ++symbol) {
        MakeNode(dictionary, symbol, 1);
        dictionary->lastSymbols[symbol] = static_cast<uint8_t>(symbol);
        dictionary->firstSymbols[symbol] = static_cast<uint8_t>(symbol);
    }
    dictionary->next = dictionary->firstMade;
}

void PutLzwString(LzwDictionary* dictionary, uint32_t node, uint32_t parent, uint32_t symbol) {
    uint16_t* const child = &dictionary->children[parent << dictionary->symbolBits | symbol];
    if (*child != 0) return;
    *child = static_cast<uint16_t>(node);
    const uint32_t length = dictionary->lengths[parent] + 1u;
    MakeNode(dictionary, node, length);
    dictionary->parents[node] = static_cast<uint16_t>(parent);
    dictionary->lastSymbols[node] = static_cast<uint8_t>(symbol);
    dictionary->firstSymbols[node] = dictionary->firstSymbols[parent];
    dictionary->nextSiblings[node] = dictionary->firstChildren[parent];
    dictionary->firstChildren[parent] = static_cast<uint16_t>(node);
    const uint8_t reach = ReachOf(length);
    for (uint32_t start = parent; dictionary->reaches[start] < reach; start = dictionary->parents[start]) {
        dictionary->reaches[start] = reach;
        if (start < dictionary->firstMade) break;
    }
}

void ReplaceLastLzwString(LzwDictionary* dictionary, uint32_t node, uint32_t parent, uint32_t symbol,
                          uint32_t newSymbol) {
    uint16_t* const child = &dictionary->children[parent << dictionary->symbolBits | symbol];
    if (*child == node) {
        *child = 0;
        dictionary->firstChildren[parent] = dictionary->nextSiblings[node];
    }
    PutLzwString(dictionary, node, parent, newSymbol);
}

}  // namespace kfx
