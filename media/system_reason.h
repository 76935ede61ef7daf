// SPDX-License-Identifier: MIT
// Why the system refused something, in words.
#pragma once

#include <string>
#include <system_error>

namespace kfx {

// A clause in our own words: the system's would be in its language, and name no file. A failure without words
// is "error" and its number.
std::string ReasonOf(const std::error_code& failure);

}  // namespace kfx
