// SPDX-License-Identifier: MIT
// Names of numbered files: NAME-%03d.png stands for NAME-000.png, NAME-001.png and so on.
#pragma once

#include <cstddef>
#include <string>

namespace kfx {

// A name with the place of a number: before%03dbehind has width 3, before%dbehind has width 1.
struct NumberPattern {
    std::string before;
    std::string behind;
    size_t width = 0;
};

// False: the name has no number's place, or several.
bool ParseNumberPattern(const std::string& name, NumberPattern* pattern);

// The number with zeros before it, up to `width` digits.
std::string PaddedNumber(size_t number, size_t width);

}  // namespace kfx
