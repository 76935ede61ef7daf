// SPDX-License-Identifier: MIT
// Results that MPFR computed, kept for builds that have no MPFR: tests/data/math/patterns.txt has a line for
// each, with a function's name and the bits of x, y and the result as hexadecimal numbers.
#pragma once

#include <string>
#include <vector>

namespace kfx {

struct Pattern {
    std::string function;
    double x;
    double y;
    double value;
};

constexpr char kPatternFile[] = "tests/data/math/patterns.txt";

std::vector<Pattern> ReadPatterns();

}  // namespace kfx
