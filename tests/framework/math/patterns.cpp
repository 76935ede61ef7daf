// SPDX-License-Identifier: MIT
#include "tests/framework/math/patterns.h"

#include <cstdint>
#include <cstring>
#include <fstream>

namespace kfx {
namespace {

double NumberOf(uint64_t bits) {
    double x;
    std::memcpy(&x, &bits, sizeof x);
    return x;
}

}  // namespace

std::vector<Pattern> ReadPatterns() {
    std::vector<Pattern> patterns;
    std::ifstream file(kPatternFile);
    std::string function;
    uint64_t x, y, value;
    while (file >> function >> std::hex >> x >> y >> value)
        patterns.push_back({function, NumberOf(x), NumberOf(y), NumberOf(value)});
    return patterns;
}

}  // namespace kfx
