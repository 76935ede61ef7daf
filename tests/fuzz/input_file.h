// SPDX-License-Identifier: MIT
// A fuzz input as an open file, for readers that take one.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace kfx::test {

// A temporary file with these bytes, at its beginning; the caller closes it.
inline std::FILE* OpenInput(const uint8_t* data, size_t size) {
    std::FILE* file = std::tmpfile();
    if (!file) std::abort();
    if (size > 0 && std::fwrite(data, 1, size, file) != size) std::abort();
    std::rewind(file);
    return file;
}

}  // namespace kfx::test
