// SPDX-License-Identifier: MIT
// Conversion between UTF-8 text and paths of the file system. On Windows the path has wide characters, so
// that any name works there, too.
#pragma once

#include <filesystem>
#include <string>

namespace kfx {

// Throws what the standard library throws for text that is not UTF-8.
inline std::filesystem::path PathOf(const std::string& utf8) {
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

inline std::string Utf8Of(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

}  // namespace kfx
