// SPDX-License-Identifier: MIT
// What an ICC profile calls itself.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kfx::commands {

// The description in a profile as UTF-8, such as "sRGB IEC61966-2.1"; from the tag "desc", in the form of
// version 2 (ASCII) or 4 (UTF-16, its first language). Control characters are left out. Empty: there is none,
// or the profile is damaged.
std::string ProfileName(const std::vector<uint8_t>& profile);

}  // namespace kfx::commands
