// SPDX-License-Identifier: MIT
// The name in an ICC profile, which is printed: it must be short UTF-8 without control characters.
#include <algorithm>
#include <cstdlib>

#include "commands/color_profile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    constexpr size_t kMostBytes = 204;
    const std::string name = kfx::commands::ProfileName({data, data + size});
    const auto isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; };
    if (name.size() > kMostBytes || std::any_of(name.begin(), name.end(), isControl)) std::abort();
    return 0;
}
