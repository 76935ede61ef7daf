// SPDX-License-Identifier: MIT
// Columns of tables for people.
#pragma once

#include <cstddef>
#include <string>

namespace kfx::commands {

// The text with spaces in front of it up to a width, or behind it.
inline std::string AtRight(size_t width, const std::string& text) {
    return std::string(text.size() < width ? width - text.size() : 0, ' ') + text;
}
inline std::string AtLeft(size_t width, const std::string& text) {
    return text + std::string(text.size() < width ? width - text.size() : 0, ' ');
}
inline std::string AtRight(size_t width, size_t number) { return AtRight(width, std::to_string(number)); }

}  // namespace kfx::commands
