// SPDX-License-Identifier: MIT
// Finding the longest string of a dictionary that pixels may be stored as.
#pragma once

#include "media/lzw.h"
#include "media/lzw_dictionary.h"

namespace kfx {

// A string that matches the pixels from some place on: nodes[n] matches n + 1 of them.
struct LzwMatch {
    size_t length;
    uint16_t nodes[LzwDictionary::kNodes];
};

// Finds the longest string of the dictionary that matches the pixels from `at` on. One that is shorter than
// `needed` does not have to be found: the length is then 0.
void FindLzwMatch(const LzwPixels& pixels, const LzwDictionary& dictionary, size_t at, size_t needed,
                  LzwMatch* match);

// Whether the pixel at `at` may be stored as this symbol.
bool MayBeStoredAs(const LzwPixels& pixels, size_t at, uint32_t symbol);

}  // namespace kfx
