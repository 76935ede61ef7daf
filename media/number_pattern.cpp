// SPDX-License-Identifier: MIT
#include "media/number_pattern.h"

namespace kfx {

bool ParseNumberPattern(const std::string& name, NumberPattern* pattern) {
    const size_t percent = name.find('%');
    if (percent == std::string::npos) return false;
    size_t at = percent + 1;
    pattern->width = 1;
    if (at + 1 < name.size() && name[at] == '0' && name[at + 1] >= '1' && name[at + 1] <= '9') {
        pattern->width = static_cast<size_t>(name[at + 1] - '0');
        at += 2;
    }
    if (at >= name.size() || name[at] != 'd') return false;
    pattern->before = name.substr(0, percent);
    pattern->behind = name.substr(at + 1);
    return pattern->behind.find('%') == std::string::npos;
}

std::string PaddedNumber(size_t number, size_t width) {
    const std::string digits = std::to_string(number);
    return digits.size() < width ? std::string(width - digits.size(), '0') + digits : digits;
}

}  // namespace kfx
