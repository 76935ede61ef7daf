// SPDX-License-Identifier: MIT
// What no message to a user may contain: the words of libraries, of the language and of the system.
#pragma once

#include <string>

namespace kfx::test {

// The first such word in the text; empty: there is none.
inline std::string LibraryWordIn(const std::string& text) {
    constexpr const char* kWords[] = {"required but received",
                                      "At Most",
                                      "CRC",
                                      "Huffman",
                                      "END symbol",
                                      "EXE format",
                                      "Adler",
                                      "zlib",
                                      "inflate",
                                      "checksum",
                                      "lodepng",
                                      "giflib",
                                      "D_GIF",
                                      "libwebp",
                                      "VP8",
                                      "libjpeg",
                                      "JERR",
                                      "errno",
                                      "exception",
                                      "std::",
                                      "bad_alloc",
                                      "basic_",
                                      "json.",
                                      "nullptr",
                                      "(null)",
                                      "%1",
                                      "%s",
                                      "assert",
                                      "No such file or directory",
                                      "Permission denied",
                                      "Is a directory"};
    for (const char* word : kWords) {
        if (text.find(word) != std::string::npos) return word;
    }
    return "";
}

}  // namespace kfx::test
