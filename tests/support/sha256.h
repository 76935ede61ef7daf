// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>

namespace kfx::test {

// The SHA-256 of the bytes in lower-case hexadecimal (FIPS 180-4).
std::string Sha256(const void* bytes, size_t size);

}  // namespace kfx::test
